// OpenedFiles: a witness of every file (not folder) that is opened in a real tree.
#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <system_error>
#include <vector>

#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

/// Watches from its construction on, across forks too. Folders whose paths are too long for the system are left out.
class OpenedFiles {
 public:
  explicit OpenedFiles(const std::vector<std::string>& folders) : events_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    for (const std::string& folder : folders) {
      if (folder.size() >= PATH_MAX) continue;
      if (::inotify_add_watch(events_.get(), folder.c_str(), IN_OPEN | IN_ONLYDIR) < 0)
        throw std::system_error(errno, std::generic_category(), "watching " + folder);
    }
  }

  /// The names of those opened since the last call.
  std::vector<std::string> take() {
    std::vector<std::string> names;
    alignas(inotify_event) char buffer[64 * 1024];
    for (ssize_t length; (length = ::read(events_.get(), buffer, sizeof buffer)) > 0;) {
      for (const char* at = buffer; at < buffer + length;) {
        const auto* event = reinterpret_cast<const inotify_event*>(at);
        if (event->mask & IN_Q_OVERFLOW) names.push_back("too many to tell");
        if (event->len > 0 && !(event->mask & IN_ISDIR)) names.push_back(event->name);
        at += sizeof *event + event->len;
      }
    }
    return names;
  }

 private:
  const UniqueDescriptor events_;
};

}  // namespace dunmere::test
