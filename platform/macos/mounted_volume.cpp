#include "platform/macos/mounted_volume.h"

#include <algorithm>

#include "platform/posix/byte_count.h"
#include "platform/posix/path_below.h"

namespace dunmere {

bool MountedVolume::isBrowsable() const {
  return (flags & kNotForBrowsing) == 0;
}

std::int64_t MountedVolume::totalBytes() const {
  return blockBytes == 0 ? 0 : bytesOf(blocks, blockBytes);
}

std::int64_t MountedVolume::availableBytes() const {
  return blockBytes == 0 ? 0 : bytesOf(availableBlocks, blockBytes);
}

const MountedVolume* volumeHolding(const std::vector<MountedVolume>& volumes, const std::string& path) {
  const MountedVolume* nearest = nullptr;
  for (const MountedVolume& volume : volumes) {
    if (!isAtOrBelow(path, volume.mountPoint)) continue;
    // Of two at one place the later one lies on top.
    if (nearest == nullptr || volume.mountPoint.size() >= nearest->mountPoint.size()) nearest = &volume;
  }
  return nearest;
}

bool isVolumeAtOrBelow(const std::vector<MountedVolume>& volumes, const std::string& path) {
  return std::ranges::any_of(volumes,
                             [&](const MountedVolume& volume) { return isAtOrBelow(volume.mountPoint, path); });
}

}  // namespace dunmere
