#include "platform/linux/held_item.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/linux/entry_status.h"
#include "platform/posix/open_path.h"
#include "platform/posix/system_values.h"

namespace dunmere {

namespace {

bool isSame(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

std::expected<HeldItem, std::error_code> holdItem(const FileUrl& url) {
  HeldItem held;
  held.name = url.lastPathComponent();
  if (!url.bytes().starts_with('/') || held.name == "." || held.name == "..") return systemFailure(EINVAL);
  if (held.name == "/") return systemFailure(EBUSY);
  auto folder = openPath(url.deletingLastPathComponent().path(), O_PATH | O_DIRECTORY);
  if (!folder) return systemFailure(folder.error());
  held.folder = std::move(*folder);
  held.item = UniqueDescriptor(openat(held.folder.get(), held.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!held.item) return systemFailure(errno);
  return held;
}

std::expected<bool, std::error_code> isHeldItem(const HeldItem& held, const UniqueDescriptor& folder,
                                                const std::string& name) {
  struct stat item{};
  struct stat entry{};
  if (fstat(held.item.get(), &item) != 0) return systemFailure(errno);
  if (fstatat(folder.get(), name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) != 0) return systemFailure(errno);
  if (isSame(item, entry)) return true;
  // An overlay gives a file of its lower layer a new inode when it moves; the open item knows where it went.
  const auto folderPath = currentPath(folder);
  return folderPath && kernelPath(held.item) == FileUrl(*folderPath).appending(name).bytes();
}

std::expected<std::string, std::error_code> currentPath(const UniqueDescriptor& folder) {
  auto path = kernelPath(folder);
  if (!path) return systemFailure(path.error());
  struct stat there{};
  struct stat here{};
  const bool reached = path->starts_with('/') && stat(path->c_str(), &there) == 0 && fstat(folder.get(), &here) == 0 &&
                       isSame(there, here);
  if (!reached) return systemFailure(ENOENT);
  return std::move(*path);
}

}  // namespace dunmere
