#include "platform/posix/open_path.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>

namespace dunmere {
namespace {

/// For the folders on the way, which need search permission only.
#ifdef O_PATH
constexpr int kHopFlags = O_PATH | O_DIRECTORY;
#else
constexpr int kHopFlags = O_SEARCH;
#endif

std::expected<UniqueDescriptor, int> openAt(int folder, std::string_view path, int flags) {
  // Empty when only slashes were left: then the folder itself is meant.
  const std::string terminated(path.empty() ? "." : path);
  UniqueDescriptor opened(::openat(folder, terminated.c_str(), flags | O_CLOEXEC));
  if (!opened) return std::unexpected(errno);
  return opened;
}

}  // namespace

std::expected<UniqueDescriptor, int> openPath(std::string_view path, int flags) {
  if (path.empty()) return std::unexpected(ENOENT);
  if (path.contains('\0')) return std::unexpected(EINVAL);
  UniqueDescriptor hop;
  while (path.size() >= PATH_MAX) {
    const std::size_t end = path.rfind('/', PATH_MAX - 1);
    if (end == std::string_view::npos || end == 0) return std::unexpected(ENAMETOOLONG);
    auto next = openAt(hop ? hop.get() : AT_FDCWD, path.substr(0, end), kHopFlags);
    if (!next) return next;
    hop = std::move(*next);
    path.remove_prefix(std::min(path.find_first_not_of('/', end), path.size()));
  }
  return openAt(hop ? hop.get() : AT_FDCWD, path, flags);
}

}  // namespace dunmere
