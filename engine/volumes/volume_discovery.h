// Volume discovery: the drives to offer (DiskSweeperScan::listVolumes) and StorageScanner, which measures the boot
// volume.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/file_system.h"

namespace dunmere {

/// Capacity of a volume in bytes; totalBytes is at least 1, freeBytes at most totalBytes.
struct VolumeSnapshot {
  std::int64_t totalBytes = 0;
  std::int64_t freeBytes = 0;

  friend bool operator==(const VolumeSnapshot&, const VolumeSnapshot&) = default;
};

/// A namespace without instances or state.
struct StorageScanner {
  StorageScanner() = delete;

  /// The boot volume's capacity and free space, measured through the user's home folder; none when it cannot be
  /// measured. Any thread.
  static std::optional<VolumeSnapshot> bootVolumeSnapshot(FileSystem& fileSystem);
};

}  // namespace dunmere
