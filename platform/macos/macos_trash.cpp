#include "platform/macos/macos_trash.h"

#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <expected>
#include <utility>

#include "platform/macos/file_manager_trash.h"
#include "platform/macos/mounted_volumes.h"

namespace dunmere {

namespace {

/// What tells one item from any other, also from a later one with its number.
struct ItemIdentity {
  dev_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t bornSeconds = 0;
  std::int64_t bornNanoseconds = 0;

  friend bool operator==(const ItemIdentity&, const ItemIdentity&) = default;
};

std::expected<ItemIdentity, int> identityAt(const std::string& path) {
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return std::unexpected(errno);
  return ItemIdentity{.device = status.st_dev,
                      .inode = status.st_ino,
                      .bornSeconds = status.st_birthtimespec.tv_sec,
                      .bornNanoseconds = status.st_birthtimespec.tv_nsec};
}

struct LocatedItem {
  std::string path;  ///< its folder without any link, and its name; the item itself is never resolved
  ItemIdentity identity;
};

std::expected<LocatedItem, int> locate(const FileUrl& url) {
  const std::string name = url.lastPathComponent();
  if (name == "/") return std::unexpected(EBUSY);
  if (name.empty() || name == "." || name == "..") return std::unexpected(EINVAL);
  char* const folder = ::realpath(url.deletingLastPathComponent().path().c_str(), nullptr);
  if (folder == nullptr) return std::unexpected(errno);
  LocatedItem located{.path = FileUrl(folder).appending(name).bytes(), .identity = {}};
  std::free(folder);
  const auto identity = identityAt(located.path);
  if (!identity) return std::unexpected(identity.error());
  located.identity = *identity;
  return located;
}

/// 0 when what was moved to `newPath` is the item.
int checkMoved(const LocatedItem& item, const std::string& newPath) {
  const auto moved = identityAt(newPath);
  if (moved == item.identity) return 0;
  if (moved) {  // should its place be taken once more, it stays in the Trash
    ::renamex_np(newPath.c_str(), item.path.c_str(), RENAME_EXCL);
    return ESTALE;
  }
  // The Trash may be closed to this program. Then it must do that the item has left its place.
  return identityAt(item.path) == item.identity ? EIO : 0;
}

int moveToTrash(const LocatedItem& item) {
  const auto volumes = mountedVolumes();
  if (!volumes) return volumes.error();
  if (isVolumeAtOrBelow(*volumes, item.path)) return EBUSY;
  const auto now = identityAt(item.path);
  if (!now) return now.error();
  if (*now != item.identity) return ESTALE;
  const auto newPath = moveToTrashWithFileManager(item.path);
  return newPath ? checkMoved(item, *newPath) : newPath.error();
}

std::string nameOfVolume(FileSystem& fileSystem, const std::string& path) {
  const auto volume = volumeOf(FileUrl(path).deletingLastPathComponent().path());
  if (!volume) return "";
  const auto values = fileSystem.volumeValues(FileUrl(volume->mountPoint));
  if (values && values->name && !values->name->empty()) return *values->name;
  return FileUrl(volume->mountPoint).lastPathComponent();
}

class HeldItem final : public TrashableItem {
 public:
  HeldItem(FileSystem& fileSystem, FileUrl url)
      : fileSystem_(fileSystem), url_(std::move(url)), located_(locate(url_)) {}

  std::expected<void, SweepError> moveToTrash() override {
    const int error = located_ ? dunmere::moveToTrash(*located_) : located_.error();
    if (error == 0) return {};
    return std::unexpected(
        SweepError{.attempt = SweepAttempt::moveToTrash,
                   .path = url_,
                   .code = std::error_code(error, std::generic_category()),
                   .volumeName = error == ENOTSUP && located_ ? nameOfVolume(fileSystem_, located_->path) : ""});
  }

 private:
  FileSystem& fileSystem_;
  const FileUrl url_;
  const std::expected<LocatedItem, int> located_;
};

}  // namespace

std::unique_ptr<TrashableItem> MacosTrash::hold(const FileUrl& url) {
  return std::make_unique<HeldItem>(fileSystem_, url);
}

}  // namespace dunmere
