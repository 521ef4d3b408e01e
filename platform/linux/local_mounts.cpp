#include "platform/linux/local_mounts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace dunmere {

namespace {

/// The kernel's, from statx(2): a mount number that is never used again. Debian 12's headers are older.
constexpr unsigned kUniqueMountNumber = 0x4000;

}  // namespace

bool LocalMounts::read(int descriptor, Mount& mount) {
  struct statx status {};
  constexpr unsigned kMask = STATX_MNT_ID | kUniqueMountNumber;
  if (::statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, kMask, &status) != 0) return false;
  mount = {::gnu_dev_makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_mnt_id};
  return (status.stx_mask & kMask) != 0;
}

bool LocalMounts::holds(int descriptor) const {
  Mount mount;
  if (!read(descriptor, mount)) return false;
  const std::lock_guard lock(mutex_);
  return mounts_.contains(mount);
}

void LocalMounts::add(int descriptor) {
  Mount mount;
  if (!read(descriptor, mount)) return;
  const std::lock_guard lock(mutex_);
  mounts_.insert(mount);
}

}  // namespace dunmere
