#include "platform/posix/folder_identity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace dunmere {

std::optional<FolderIdentity> folderIdentity(int descriptor) {
  struct statx status{};
  // The inode number never changes while the folder is open, so no server need be asked.
  if (::statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_INO, &status) != 0) return std::nullopt;
  return FolderIdentity{::gnu_dev_makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino};
}

}  // namespace dunmere
