#include "platform/linux/link_resolution.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <optional>
#include <utility>

#include "platform/linux/entry_status.h"

namespace dunmere {

namespace {

/// The path by which the system knows an open file; none for a file without one (a pipe, a deleted file, a path longer
/// than the system can tell).
std::optional<std::string> pathOfDescriptor(int descriptor) {
  std::string path(PATH_MAX, '\0');
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  if (length <= 0 || path.front() != '/') return std::nullopt;
  path.resize(static_cast<std::size_t>(length));
  // The system marks the former path of a deleted file; a file may also be called so.
  struct stat status{};
  const bool isDeleted = path.ends_with(" (deleted)") && ::fstat(descriptor, &status) == 0 && status.st_nlink == 0;
  return isDeleted ? std::nullopt : std::optional(path);
}

}  // namespace

std::expected<UniqueDescriptor, int> findTarget(int folder, const std::string& name) {
  // O_PATH finds the target without opening it, so a device or a FIFO at the end does no harm.
  UniqueDescriptor target(::openat(folder, name.c_str(), O_PATH | O_CLOEXEC));
  if (!target) return std::unexpected(errno);
  return target;
}

LinkTarget describeTarget(const UniqueDescriptor& target, FileUrl ownUrl) {
  auto path = pathOfDescriptor(target.get());
  return {.url = path ? FileUrl(std::move(*path)).standardized() : std::move(ownUrl),
          .attributes = entryStatus(target.get(), "")};
}

}  // namespace dunmere
