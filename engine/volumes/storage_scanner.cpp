#include "engine/volumes/storage_scanner.h"

#include <algorithm>

namespace dunmere {

std::optional<VolumeSnapshot> StorageScanner::bootVolumeSnapshot(FileSystem& fileSystem) {
  const auto values = fileSystem.volumeValues(fileSystem.homeFolder());
  if (!values) return std::nullopt;
  const std::int64_t total = values->totalBytes.value_or(0);
  if (total < 1) return std::nullopt;
  const std::int64_t free = values->availableForImportantUsageBytes.value_or(values->availableBytes.value_or(0));
  return VolumeSnapshot{total, std::min(total, free)};
}

}  // namespace dunmere
