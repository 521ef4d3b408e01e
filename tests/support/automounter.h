// Automounter: points where a volume would mount itself.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

#include "platform/posix/unique_descriptor.h"
#include "tests/support/own_mounts.h"

namespace dunmere::test {

/// Never mounts anything: whoever asks waits for ever. Processes of its own process group do not ask. To be used in a
/// process with mounts of its own.
class Automounter {
 public:
  Automounter() {
    ::setpgid(0, 0);  // a group from outside of this process's namespace has no number here
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    questions_ = UniqueDescriptor(ends[0]);
    kernel_ = UniqueDescriptor(ends[1]);
  }

  /// `type`: "direct", which mounts itself at `path`; "indirect", whose folders do.
  void mountAt(const std::string& path, const std::string& type) const {
    mountNew(path, "autofs",
             "fd=" + std::to_string(kernel_.get()) + ",pgrp=" + std::to_string(::getpgrp()) +
                 ",minproto=5,maxproto=5," + type);
  }

  bool wasAsked() const {
    pollfd question{.fd = questions_.get(), .events = POLLIN, .revents = 0};
    return ::poll(&question, 1, 0) > 0;
  }

 private:
  UniqueDescriptor questions_;
  UniqueDescriptor kernel_;
};

}  // namespace dunmere::test
