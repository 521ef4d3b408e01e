// StorageScanner: measures the boot volume through the user's home folder.
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

  /// The boot volume's capacity and free space; none when it cannot be measured. Any thread.
  static std::optional<VolumeSnapshot> bootVolumeSnapshot(FileSystem& fileSystem);
};

}  // namespace dunmere
