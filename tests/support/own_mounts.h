// Mounts that only a test's child process sees.
#pragma once

#include <functional>
#include <string>

#include "tests/support/child_process.h"

namespace dunmere::test {

/// runInChild() after enterPrivateMounts().
ChildResult runWithOwnMounts(const std::function<int()>& work);

// For use inside a child only. Each throws std::system_error when the system refuses.

/// From here on the process has its own view of the mounts: nothing that it mounts is seen outside, and all of it
/// ends with the process. Needs root, or a system that allows user namespaces.
void enterPrivateMounts();

/// Mounts a new file system of `type` ("tmpfs", "ramfs") on the existing folder `path`.
void mountNew(const std::string& path, const std::string& type, const std::string& options = {});

/// Shows the folder `from`, with all that is mounted in it, also at the existing folder `to`.
void mountAgain(const std::string& from, const std::string& to);

/// Makes the mount at `path` read-only.
void remountReadOnly(const std::string& path);

/// Mounts a volume that has a Trash of its own, as a disk has one, on the new folder `path`. `options` are those of the
/// tmpfs below it, which may bound its size.
void mountVolume(const std::string& path, const std::string& options = {});

/// Mounts an empty file system in the file `image`, which is as large as it shall be, on the existing folder `path`.
void mountImage(const std::string& image, const std::string& path);

/// The same with a btrfs, which takes an image of at least 110 MB.
void mountBtrfs(const std::string& image, const std::string& path);

/// Makes the subvolume `path` on a btrfs.
void makeSubvolume(const std::string& path);

/// Makes the read-only snapshot `path` of the subvolume `from`.
void makeSnapshot(const std::string& from, const std::string& path);

}  // namespace dunmere::test
