#include "platform/linux/local_file_system.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace dunmere {

bool liesOnLocalFileSystem(int descriptor) {
  // In doubt not: that costs a little time, the contrary a frozen window.
  constexpr auto kLocal =
      std::to_array<std::uint32_t>({BTRFS_SUPER_MAGIC, EXT4_SUPER_MAGIC, F2FS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC,
                                    RAMFS_MAGIC, TMPFS_MAGIC, XFS_SUPER_MAGIC});
  struct statfs status{};
  return ::fstatfs(descriptor, &status) == 0 &&
         std::ranges::find(kLocal, static_cast<std::uint32_t>(status.f_type)) != kLocal.end();
}

}  // namespace dunmere
