// Mount points: where file systems are mounted, as bytes, and how they lie relative to a path.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace dunmere {

/// All mount points that this process sees, hidden and internal ones too, in the kernel's order. Fails with the
/// system's code when the kernel's list cannot be read. No mounted file system is touched. Any thread.
std::expected<std::vector<std::string>, std::error_code> readMountPoints();

/// The mount points of a text in the form of /proc/self/mountinfo, whose octal escapes are undone.
std::vector<std::string> parseMountPoints(std::string_view mountInfo);

// For both, `path` and the mount points are physical: absolute, without links, "." or "..", or a trailing slash.

/// Whether something is mounted exactly at `path` or anywhere below it.
bool isMountAtOrBelow(const std::vector<std::string>& mountPoints, std::string_view path);

/// The mount point of the volume that `path` lies on; "/" when none is nearer.
std::string mountPointHolding(const std::vector<std::string>& mountPoints, std::string_view path);

}  // namespace dunmere
