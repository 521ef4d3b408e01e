// MountedVolume: one line of the system's list of mounted volumes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dunmere {

/// As getfsstat(2) tells it. Texts are raw bytes.
struct MountedVolume {
  /// The bit of `flags` that keeps a volume from people's eyes: MNT_DONTBROWSE of mount(2), known on any system.
  static constexpr std::uint32_t kNotForBrowsing = 0x0010'0000;

  std::string mountPoint;  ///< absolute path without trailing slash
  std::string device;      ///< or share, or any other word
  std::uint32_t flags = 0;
  std::uint64_t blockBytes = 0;
  std::uint64_t blocks = 0;
  std::uint64_t availableBlocks = 0;  ///< to this user

  bool isBrowsable() const;
  std::int64_t totalBytes() const;      ///< capacity; never negative
  std::int64_t availableBytes() const;  ///< to this user; never negative

  friend bool operator==(const MountedVolume&, const MountedVolume&) = default;
};

/// The volume that is mounted nearest above `path`, an absolute path without "." and "..". Lexical: a path that the
/// system leads to another volume unseen is not noticed. Null when there is none. Points into `volumes`.
const MountedVolume* volumeHolding(const std::vector<MountedVolume>& volumes, const std::string& path);

/// Whether a volume is mounted exactly at `path`, a path as above, or anywhere below it. Lexical.
bool isVolumeAtOrBelow(const std::vector<MountedVolume>& volumes, const std::string& path);

}  // namespace dunmere
