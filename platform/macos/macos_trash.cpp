// The Trash on macOS: the system's file manager does the move; around it stand the checks that it lacks. An item is
// known by its device, its number there and the time it was made; no descriptor keeps its volume mounted.

#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <expected>
#include <utility>
#include <vector>

#include "platform/macos/cocoa_error.h"
#include "platform/macos/mounted_volumes.h"
#include "platform/macos/objective_c.h"
#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"
#include "platform/trash.h"

namespace dunmere {
namespace {

using objective_c::classNamed;
using objective_c::send;

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

struct HeldItem {
  std::string path;  ///< its folder without any link, and its name; the item itself is never resolved
  ItemIdentity identity;
};

std::expected<HeldItem, int> holdItem(const FileUrl& url) {
  const std::string name = url.lastPathComponent();
  if (name == "/") return std::unexpected(EBUSY);
  if (name.empty() || name == "." || name == "..") return std::unexpected(EINVAL);
  char* const folder = ::realpath(url.deletingLastPathComponent().path().c_str(), nullptr);
  if (folder == nullptr) return std::unexpected(errno);
  HeldItem held{.path = FileUrl(folder).appending(name).bytes(), .identity = {}};
  std::free(folder);
  const auto identity = identityAt(held.path);
  if (!identity) return std::unexpected(identity.error());
  held.identity = *identity;
  return held;
}

/// 0 when what was moved to `newPath` is the item.
int checkMoved(const HeldItem& item, const std::string& newPath) {
  const auto moved = identityAt(newPath);
  if (moved == item.identity) return 0;
  if (moved) {  // should its place be taken once more, it stays in the Trash
    ::renamex_np(newPath.c_str(), item.path.c_str(), RENAME_EXCL);
    return ESTALE;
  }
  // The Trash may be closed to this program. Then the only evidence is that the item is gone.
  return identityAt(item.path) == item.identity ? EIO : 0;
}

std::vector<CocoaError> chainOf(id error) {
  constexpr std::size_t kDeepest = 8;
  const id underlying = objective_c::stringOf("NSUnderlyingError");
  std::vector<CocoaError> chain;
  while (error != nullptr && chain.size() < kDeepest) {
    chain.push_back({.domain = objective_c::textOf(send(error, "domain")), .code = send<long>(error, "code")});
    error = send(send(error, "userInfo"), "objectForKey:", underlying);
  }
  return chain;
}

/// Moves what is at `path` (a link itself) to the Trash of its volume, without any check. Gives its new path, empty
/// when the system does not tell. ENOTSUP: the volume has no Trash; EIO: the reason is unknown.
std::expected<std::string, int> moveWithFileManager(const std::string& path) {
  const objective_c::AutoreleasePool pool;
  const id url = objective_c::fileUrlOf(path);
  if (url == nullptr) return std::unexpected(EINVAL);
  const id manager = send(classNamed("NSFileManager"), "defaultManager");
  id moved = nullptr;
  id error = nullptr;
  const bool isMoved = send<BOOL>(manager, "trashItemAtURL:resultingItemURL:error:", url, &moved, &error);
  if (!isMoved) return std::unexpected(errnoOf(chainOf(error)));
  const auto* const newPath = send<const char*>(moved, "fileSystemRepresentation");
  return newPath == nullptr ? "" : newPath;
}

int moveToTrash(const HeldItem& item) {
  const auto volumes = mountedVolumes();
  if (!volumes) return volumes.error();
  if (isMountAtOrBelow(*volumes, item.path)) return EBUSY;
  const auto now = identityAt(item.path);
  if (!now) return now.error();
  if (*now != item.identity) return ESTALE;
  const auto newPath = moveWithFileManager(item.path);
  return newPath ? checkMoved(item, *newPath) : newPath.error();
}

std::string nameOfVolume(FileSystem& fileSystem, const std::string& path) {
  const auto volume = volumeOf(FileUrl(path).deletingLastPathComponent().path());
  if (!volume) return "";
  const auto values = fileSystem.volumeValues(FileUrl(volume->mountPoint));
  if (values && values->name && !values->name->empty()) return *values->name;
  return FileUrl(volume->mountPoint).lastPathComponent();
}

class ItemForTrash final : public TrashableItem {
 public:
  ItemForTrash(FileSystem& fileSystem, FileUrl url)
      : fileSystem_(fileSystem), url_(std::move(url)), held_(holdItem(url_)) {}

  std::expected<void, SweepError> moveToTrash() override {
    const int error = held_ ? dunmere::moveToTrash(*held_) : held_.error();
    if (error == 0) return {};
    return std::unexpected(
        SweepError{.attempt = SweepAttempt::moveToTrash,
                   .path = url_,
                   .code = systemCode(error),
                   .volumeName = error == ENOTSUP && held_ ? nameOfVolume(fileSystem_, held_->path) : ""});
  }

 private:
  FileSystem& fileSystem_;
  const FileUrl url_;
  const std::expected<HeldItem, int> held_;
};

}  // namespace

std::unique_ptr<TrashableItem> Trash::hold(const FileUrl& url) {
  return std::make_unique<ItemForTrash>(fileSystem_, url);
}

}  // namespace dunmere
