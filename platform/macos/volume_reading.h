// readVolume: what a mounted volume says of itself, asked at once.
#pragma once

#include <expected>
#include <string>

#include "platform/posix/volume_meter.h"

namespace dunmere {

/// Name and space of the volume that `path` lies on; the device is not asked. May wait for ever. Fails with an errno
/// value. Any thread.
std::expected<VolumeReading, int> readVolume(const std::string& path, const std::string& device);

}  // namespace dunmere
