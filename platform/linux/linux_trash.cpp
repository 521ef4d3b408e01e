// The Trash on Linux, laid out as freedesktop.org's Trash specification 1.0 says. The record of the origin is on the
// disk before the item moves, so that an end at any moment leaves the item whole and in one place: where it was, or in
// the Trash with its origin.

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <expected>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/linux/directory_sizes.h"
#include "platform/linux/held_item.h"
#include "platform/linux/item_look.h"
#include "platform/linux/mount_choice.h"
#include "platform/linux/mount_table.h"
#include "platform/linux/trash_folder.h"
#include "platform/linux/trash_record.h"
#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"
#include "platform/trash.h"

namespace dunmere {

namespace {

std::error_code renameOntoNothing(const UniqueDescriptor& fromFolder, const std::string& from,
                                  const UniqueDescriptor& toFolder, const std::string& to) {
  if (renameat2(fromFolder.get(), from.c_str(), toFolder.get(), to.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL) return systemCode(errno);
  // The file system has no RENAME_NOREPLACE. The check below can race, but no other program uses these names.
  struct stat taken{};
  if (fstatat(toFolder.get(), to.c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) return systemCode(EEXIST);
  if (renameat(fromFolder.get(), from.c_str(), toFolder.get(), to.c_str()) == 0) return {};
  return systemCode(errno);
}

/// The two ends of one move.
struct Move {
  const HeldItem& held;
  const TrashFolder& trash;
  std::string recordText;
};

/// EEXIST when the Trash has something of that name already.
std::error_code moveAs(const Move& move, const std::string& name) {
  const HeldItem& held = move.held;
  auto record = TrashRecord::write(move.trash, name, move.recordText);
  if (!record) return record.error();
  if (const auto code = renameOntoNothing(held.folder, held.name, move.trash.files, name)) return code;
  const auto isRightOne = isHeldItem(held, move.trash.files, name);
  if (isRightOne == true) {
    record->keep();
    return {};
  }
  // If it cannot go back, its record must stay.
  if (renameOntoNothing(move.trash.files, name, held.folder, held.name)) record->keep();
  return isRightOne ? systemCode(ESTALE) : isRightOne.error();
}

/// The name that the item has got in the Trash.
std::expected<std::string, std::error_code> moveUnderFreeName(const Move& move) {
  for (int attempt = 1;; ++attempt) {
    std::string name = nameInTrash(move.held.name, attempt);
    const auto code = moveAs(move, name);
    if (!code) return name;
    if (code == std::errc::cross_device_link) return systemFailure(ENOTSUP);
    if (code != std::errc::file_exists) return std::unexpected(code);
  }
}

/// A file system in memory gets no Trash: it is lost with the next start. A container's overlay does, although libmount
/// counts it as a pseudo file system: there it is the disk.
bool mayHoldTrash(const MountEntry& mount) {
  return holdsUserFiles(mount) || mount.fileSystem == "overlay";
}

std::expected<TrashFolder, std::error_code> openTrash(const HeldItem& held, const MountEntry* mount) {
  auto home = openHomeTrash(held);
  if (!home) return std::unexpected(home.error());
  if (*home) return std::move(**home);
  if (mount == nullptr || !mayHoldTrash(*mount)) return systemFailure(ENOTSUP);
  return openVolumeTrash(held, mount->mountPoint);
}

std::expected<std::string, std::error_code> pathOf(const HeldItem& held) {
  const auto folder = currentPath(held.folder);
  if (!folder) return std::unexpected(folder.error());
  return FileUrl(*folder).appending(held.name).bytes();
}

/// Moving it once more would free nothing and lose the record of where it came from.
bool liesInATrash(const std::string& path) {
  for (FileUrl above(path); above.path() != "/";) {
    above = above.deletingLastPathComponent();
    if (isTrash(above.path())) return true;
  }
  return false;
}

/// Whether the item may move into that Trash, which may have any name: the user's own may be a link.
std::error_code refusalBeside(const TrashFolder& trash, const std::string& path) {
  const auto trashPath = currentPath(trash.folder);
  if (!trashPath) return trashPath.error();
  if (isAtOrBelow(*trashPath, path)) return systemCode(EDEADLK);
  return isAtOrBelow(path, *trashPath) ? systemCode(EALREADY) : std::error_code();
}

/// All mounts; EBUSY when one is at the item or below it.
std::expected<std::vector<MountEntry>, std::error_code> mountsBeside(const std::string& path) {
  auto mounts = readMountTable();
  if (!mounts) return systemFailure(mounts.error());
  if (isMountAtOrBelow(*mounts, path)) return systemFailure(EBUSY);
  return std::move(*mounts);
}

/// What the move would fail with, before a look through the item that may take long.
std::error_code refusalOfRights(const HeldItem& held, const TrashFolder& trash) {
  for (const UniqueDescriptor* folder : {&trash.info, &trash.files, &held.folder}) {
    if (faccessat(folder->get(), ".", W_OK | X_OK, 0) != 0) return systemCode(errno);
  }
  return {};
}

class ItemForTrash final : public TrashableItem {
 public:
  ItemForTrash(FileSystem& fileSystem, const FileUrl& url) : fileSystem_(fileSystem), url_(url), held_(holdItem(url)) {}

  std::expected<void, SweepError> moveToTrash() override {
    SweepError error{.attempt = SweepAttempt::moveToTrash, .path = url_, .code = {}, .volumeName = {}};
    error.code = move(error.volumeName);
    if (error.code) return std::unexpected(error);
    return {};
  }

 private:
  std::error_code move(std::string& volumeName) {
    if (!held_) return held_.error();
    const auto path = pathOf(*held_);
    if (!path) return path.error();
    const auto mounts = mountsBeside(*path);  // first: what is mounted below may never answer
    if (!mounts) return mounts.error();
    const auto isHere = isHeldItem(*held_, held_->folder, held_->name);
    if (!isHere) return isHere.error();
    if (!*isHere) return systemCode(ESTALE);
    if (liesInATrash(*path)) return systemCode(EALREADY);
    if (isTrash(*path)) return systemCode(EDEADLK);

    const MountEntry* const mount = mountHolding(*mounts, *path);
    const std::error_code code = moveOn(mount, *path);
    if (code == std::errc::not_supported) volumeName = nameOfVolume(mount ? mount->mountPoint : "/");
    return code;
  }

  std::error_code moveOn(const MountEntry* mount, const std::string& path) {
    const auto trash = openTrash(*held_, mount);
    if (!trash) return trash.error();
    if (const auto code = refusalBeside(*trash, path)) return code;
    if (const auto code = refusalOfRights(*held_, *trash)) return code;
    // A server may take long to tell the size of every file.
    const bool isSlow = mount != nullptr && isShare(*mount);
    const auto space = lookThrough(*held_, isSlow ? LookDetail::rights : LookDetail::space);
    if (!space) return space.error();
    // Once more: the look may have taken long.
    if (pathOf(*held_) != path) return systemCode(ESTALE);
    if (const auto mounts = mountsBeside(path); !mounts) return mounts.error();
    const auto name = moveUnderFreeName({*held_, *trash, trashRecordText(*trash, path, std::time(nullptr))});
    if (!name) return name.error();
    if (*space) noteDirectorySize(*trash, *name, **space);
    return {};
  }

  std::string nameOfVolume(const std::string& mountPoint) {
    // A subvolume is called by its folder: the volume around it may well have a Trash.
    const auto top = topFolder(*held_);
    if (top && *top != mountPoint) return FileUrl(*top).lastPathComponent();
    const auto values = fileSystem_.volumeValues(FileUrl(mountPoint));
    if (values && values->name && !values->name->empty()) return *values->name;
    return mountPoint == "/" ? "Filesystem root" : FileUrl(mountPoint).lastPathComponent();
  }

  FileSystem& fileSystem_;
  const FileUrl url_;
  const std::expected<HeldItem, std::error_code> held_;
};

}  // namespace

std::unique_ptr<TrashableItem> Trash::hold(const FileUrl& url) {
  return std::make_unique<ItemForTrash>(fileSystem_, url);
}

}  // namespace dunmere
