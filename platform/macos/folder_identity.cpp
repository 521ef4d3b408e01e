#include "platform/posix/folder_identity.h"

#include <sys/stat.h>

namespace dunmere {

std::optional<FolderIdentity> folderIdentity(int descriptor) {
  struct stat status{};
  if (::fstat(descriptor, &status) != 0) return std::nullopt;
  return FolderIdentity{static_cast<std::uint64_t>(status.st_dev), status.st_ino};
}

}  // namespace dunmere
