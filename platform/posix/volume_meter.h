// VolumeMeter: measures volumes without ever waiting long for one that does not answer.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/posix/patience.h"

namespace dunmere {

/// What a mounted file system says of itself.
struct VolumeReading {
  std::optional<std::string> label;
  std::int64_t totalBytes = 0;
  std::int64_t availableBytes = 0;                              ///< to this user
  std::optional<std::int64_t> availableForImportantUsageBytes;  ///< with what the system would clear

  friend bool operator==(const VolumeReading&, const VolumeReading&) = default;
};

/// Asks each volume with patience, one place for each mount point. Thread-safe.
class VolumeMeter {
 public:
  /// Reads the volume that `path` lies on; `device` is its mount's source. Runs on any thread and may never return;
  /// whatever it captures must live as long. Fails with an errno value.
  using Read = std::function<std::expected<VolumeReading, int>(const std::string& path, const std::string& device)>;

  static constexpr std::chrono::milliseconds kPatience = Patience::kUsual;

  explicit VolumeMeter(Read read, std::chrono::milliseconds patience = kPatience)
      : read_(std::move(read)), patience_(patience) {}

  /// `mountPoint` tells which volumes are known to be stuck. Fails with an errno value, ETIMEDOUT for no answer in
  /// time.
  std::expected<VolumeReading, int> measure(const std::string& mountPoint, const std::string& path,
                                            const std::string& device);

 private:
  const Read read_;
  Patience patience_;
};

}  // namespace dunmere
