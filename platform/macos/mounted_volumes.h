// mountedVolumes: the system's list of mounted volumes.
#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <vector>

#include "platform/posix/system_values.h"

namespace dunmere {

/// One mounted volume, as getfsstat(2) tells it. Texts are raw bytes.
struct MountedVolume {
  /// The bit of `flags` that keeps a volume from people's eyes: MNT_DONTBROWSE of mount(2), known on any system.
  static constexpr std::uint32_t kNotForBrowsing = 0x0010'0000;

  std::string mountPoint;  ///< absolute path without trailing slash
  std::string device;      ///< or share, or any other word
  std::uint32_t flags = 0;
  std::uint64_t blockBytes = 0;
  std::uint64_t blocks = 0;
  std::uint64_t availableBlocks = 0;  ///< to this user

  bool isBrowsable() const { return (flags & kNotForBrowsing) == 0; }
  /// Capacity; never negative.
  std::int64_t totalBytes() const { return bytesOf(blocks, blockBytes); }
  /// To this user; never negative.
  std::int64_t availableBytes() const { return bytesOf(availableBlocks, blockBytes); }
};

/// All of them, hidden ones too, in the system's order. Waits for no volume. Fails with an errno value. Any thread.
std::expected<std::vector<MountedVolume>, int> mountedVolumes();

/// The volume that `path` lies on. May wait for ever. Fails with an errno value. Any thread.
std::expected<MountedVolume, int> volumeOf(const std::string& path);

}  // namespace dunmere
