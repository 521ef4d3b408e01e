// readVolume: what a mounted file system says of itself.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace dunmere {

struct VolumeReading {
  std::optional<std::string> label;
  std::int64_t totalBytes = 0;
  std::int64_t availableBytes = 0;                              ///< to this user
  std::optional<std::int64_t> availableForImportantUsageBytes;  ///< with what the system would clear

  friend bool operator==(const VolumeReading&, const VolumeReading&) = default;
};

/// Space and label of the volume that `path` lies on and `device` is the source of. May wait for ever. Fails with an
/// errno value. The build picks the implementation. Any thread.
std::expected<VolumeReading, int> readVolume(const std::string& path, const std::string& device);

}  // namespace dunmere
