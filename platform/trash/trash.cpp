#include "platform/trash/trash.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "platform/linux/mount_table.h"
#include "platform/trash/gio_trash.h"
#include "platform/trash/located_item.h"
#include "platform/trash/trashed_item.h"

namespace dunmere {

namespace {

std::error_code codeOf(int number) {
  return {number, std::generic_category()};
}

/// Why the volume could take no record of the item's origin. The Trash lies on the item's own volume, always: GIO only
/// renames. A volume that does not count its blocks says 0 for their total. Free inodes need no look: without one GIO
/// cannot even begin.
std::error_code volumeRefusal(const UniqueDescriptor& folder) {
  struct statvfs volume {};
  if (fstatvfs(folder.get(), &volume) != 0) return codeOf(errno);
  if ((volume.f_flag & ST_RDONLY) != 0) return codeOf(EROFS);
  const bool mayUseReserve = geteuid() == 0;
  const auto freeBlocks = mayUseReserve ? volume.f_bfree : volume.f_bavail;
  if (volume.f_blocks > 0 && freeBlocks == 0) return codeOf(ENOSPC);
  return {};
}

/// What a reported success is worth.
std::error_code checkMoved(const LocatedItem& located) {
  const auto stillThere = isAtItsPlace(located);
  if (!stillThere) return stillThere.error();
  if (*stillThere) return codeOf(EIO);
  const auto trashed = findInTrash(located);
  if (!trashed || isOriginRecorded(*trashed)) return {};
  return putBack(*trashed, located) ? unrecordedReason(*trashed) : std::error_code();
}

std::unexpected<SweepError> failure(const FileUrl& url, std::error_code code, const std::string& volumeName = {}) {
  return std::unexpected(SweepError{SweepAttempt::moveToTrash, url, code, volumeName});
}

}  // namespace

std::expected<void, SweepError> Trash::moveItem(const FileUrl& url) {
  const auto located = locateItem(url);
  if (!located) return failure(url, located.error());
  const auto mounts = readMountTable();
  if (!mounts) return failure(url, codeOf(mounts.error()));
  if (isMountAtOrBelow(*mounts, located->physicalPath)) return failure(url, codeOf(EBUSY));
  if (const auto code = volumeRefusal(located->folder)) return failure(url, code);

  // The physical path, so that GIO and the guards speak of the same item, and the record names a place that lasts.
  const std::error_code refused = moveToTrashWithGio(located->physicalPath);
  if (refused == std::errc::not_supported) {
    const MountEntry* const mount = mountHolding(*mounts, located->physicalPath);
    return failure(url, refused, nameOfVolume(mount ? mount->mountPoint : "/"));
  }
  if (refused) return failure(url, refused);
  if (const auto code = checkMoved(*located)) return failure(url, code);
  return {};
}

std::string Trash::nameOfVolume(const std::string& mountPoint) {
  const auto values = fileSystem_.volumeValues(FileUrl(mountPoint));
  if (values && values->name && !values->name->empty()) return *values->name;
  return mountPoint == "/" ? "Filesystem root" : FileUrl(mountPoint).lastPathComponent();
}

}  // namespace dunmere
