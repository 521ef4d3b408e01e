#include "platform/posix/volume_reading.h"

#include "platform/macos/attribute_request.h"
#include "platform/macos/mounted_volumes.h"
#include "platform/macos/objective_c.h"

namespace dunmere {

namespace {

using objective_c::send;

/// What is free and what the system would clear for something that the user asks for: a service of the system knows,
/// and no call of the kernel.
std::optional<std::int64_t> spaceForImportantUsage(const std::string& path) {
  const objective_c::AutoreleasePool pool;
  const id key = objective_c::stringOf("NSURLVolumeAvailableCapacityForImportantUsageKey");  // a constant's own name
  const id keys = send(objective_c::classNamed("NSArray"), "arrayWithObject:", key);
  const id values = send(objective_c::fileUrlOf(path), "resourceValuesForKeys:error:", keys, static_cast<id*>(nullptr));
  const id number = send(values, "objectForKey:", key);
  if (number == nullptr) return std::nullopt;
  return send<long long>(number, "longLongValue");
}

}  // namespace

std::expected<VolumeReading, int> readVolume(const std::string& path, const std::string&) {
  const auto volume = volumeOf(path);
  if (!volume) return std::unexpected(volume.error());
  return VolumeReading{.label = volumeNameAt(volume->mountPoint),
                       .totalBytes = volume->totalBytes(),
                       .availableBytes = volume->availableBytes(),
                       .availableForImportantUsageBytes = spaceForImportantUsage(path)};
}

}  // namespace dunmere
