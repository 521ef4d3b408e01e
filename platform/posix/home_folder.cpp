#include "platform/posix/home_folder.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace dunmere {

FileUrl currentHomeFolder() {
  constexpr std::size_t kFirstSize = 4096;
  constexpr std::size_t kLargestSize = 1 << 20;  // entries of directory services can be long, but not that long
  for (std::vector<char> text(kFirstSize); text.size() <= kLargestSize; text.resize(text.size() * 2)) {
    passwd record{};
    passwd* found = nullptr;
    const int error = ::getpwuid_r(::getuid(), &record, text.data(), text.size(), &found);
    if (error == ERANGE) continue;
    if (error != 0 || found == nullptr) break;
    const std::string home = found->pw_dir == nullptr ? "" : found->pw_dir;
    return home.starts_with('/') ? FileUrl(home) : FileUrl("/");
  }
  return FileUrl("/");
}

}  // namespace dunmere
