// VolumeMeter: measures volumes without ever waiting long for one that does not answer.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dunmere {

/// What a mounted file system says of itself.
struct VolumeReading {
  std::optional<std::string> label;
  std::int64_t totalBytes = 0;
  std::int64_t availableBytes = 0;                              ///< to this user
  std::optional<std::int64_t> availableForImportantUsageBytes;  ///< with what the system would clear

  friend bool operator==(const VolumeReading&, const VolumeReading&) = default;
};

/// Asks each volume on a thread of its own and waits for it a bounded time. A thread that is stuck in a dead volume is
/// left behind, at most one for each mount point: until it comes back, the volume fails at once. Thread-safe.
class VolumeMeter {
 public:
  /// Reads the volume that `path` lies on; `device` is its mount's source. Runs on any thread and may never return;
  /// whatever it captures must live as long. Fails with an errno value.
  using Read = std::function<std::expected<VolumeReading, int>(const std::string& path, const std::string& device)>;

  /// The time after which a file system that answers at all has long done so.
  static constexpr std::chrono::milliseconds kPatience{1000};

  explicit VolumeMeter(Read read, std::chrono::milliseconds patience = kPatience);

  /// `mountPoint` tells which volumes are known to be stuck. Fails with an errno value, ETIMEDOUT for no answer in
  /// time.
  std::expected<VolumeReading, int> measure(const std::string& mountPoint, const std::string& path,
                                            const std::string& device);

 private:
  struct Shared;

  const Read read_;
  const std::chrono::milliseconds patience_;
  const std::shared_ptr<Shared> shared_;
};

}  // namespace dunmere
