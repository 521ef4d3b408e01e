#include "platform/trash/located_item.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>

namespace dunmere {

namespace {

std::error_code codeOf(int number) {
  return {number, std::generic_category()};
}

struct Free {
  void operator()(char* text) const { std::free(text); }
};

std::expected<std::string, std::error_code> physicalFolder(const std::string& path) {
  const std::unique_ptr<char, Free> resolved(realpath(path.c_str(), nullptr));
  if (!resolved) return std::unexpected(codeOf(errno));
  return std::string(resolved.get());
}

}  // namespace

std::expected<LocatedItem, std::error_code> locateItem(const FileUrl& url) {
  LocatedItem located;
  located.name = url.lastPathComponent();
  if (!url.bytes().starts_with('/') || located.name == "." || located.name == "..") {
    return std::unexpected(codeOf(EINVAL));
  }
  if (located.name == "/") return std::unexpected(codeOf(EBUSY));

  const auto folderPath = physicalFolder(url.deletingLastPathComponent().path());
  if (!folderPath) return std::unexpected(folderPath.error());
  located.physicalPath = FileUrl(*folderPath).appending(located.name).bytes();

  located.folder = UniqueDescriptor(open(folderPath->c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!located.folder) return std::unexpected(codeOf(errno));
  located.item = UniqueDescriptor(openat(located.folder.get(), located.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!located.item) return std::unexpected(codeOf(errno));
  return located;
}

std::expected<bool, std::error_code> isAtItsPlace(const LocatedItem& located) {
  struct stat item {};
  struct stat place {};
  if (fstat(located.item.get(), &item) != 0) return std::unexpected(codeOf(errno));
  if (fstatat(located.folder.get(), located.name.c_str(), &place, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return false;
    return std::unexpected(codeOf(errno));
  }
  return item.st_dev == place.st_dev && item.st_ino == place.st_ino;
}

}  // namespace dunmere
