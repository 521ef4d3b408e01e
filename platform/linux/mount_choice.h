// isOfferedMount, holdsUserFiles, isShare: which mounts people think of as drives.
#pragma once

#include "platform/linux/mount_table.h"

namespace dunmere {

/// "/" always is; any other mount if it holds files of a real file system or a share, all of it (or a btrfs subvolume,
/// or a folder of a share), and is mounted where a person would look. Decided by the table alone. Any thread.
bool isOfferedMount(const MountEntry& mount);

/// Whether its files come from a server. Decided by the table alone. Any thread.
bool isShare(const MountEntry& mount);

/// Whether it holds files of a real file system or a share, and not what the system makes or keeps in memory, or a
/// packed image. Decided by the table alone. Any thread.
bool holdsUserFiles(const MountEntry& mount);

}  // namespace dunmere
