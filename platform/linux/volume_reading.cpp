#include "platform/posix/volume_reading.h"

#include <sys/statvfs.h>

#include <cerrno>

#include "platform/linux/volume_label.h"

namespace dunmere {

std::expected<VolumeReading, int> readVolume(const std::string& path, const std::string& device) {
  struct statvfs space{};
  if (::statvfs(path.c_str(), &space) != 0) return std::unexpected(errno);
  const auto bytes = [&space](fsblkcnt_t blocks) { return static_cast<std::int64_t>(blocks * space.f_frsize); };
  return VolumeReading{.label = labelOfDevice(device),
                       .totalBytes = bytes(space.f_blocks),
                       .availableBytes = bytes(space.f_bavail),
                       .availableForImportantUsageBytes = std::nullopt};
}

}  // namespace dunmere
