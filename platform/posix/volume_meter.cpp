#include "platform/posix/volume_meter.h"

namespace dunmere {

std::expected<VolumeReading, int> VolumeMeter::measure(const std::string& mountPoint, const std::string& path,
                                                       const std::string& device) {
  using Answer = std::expected<VolumeReading, int>;
  auto answer = patience_.ask<Answer>(mountPoint, [path, device, read = read_] { return read(path, device); });
  return answer ? *std::move(answer) : std::unexpected(answer.error());
}

}  // namespace dunmere
