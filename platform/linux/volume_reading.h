// readVolume: what a mounted file system says of itself, asked at once.
#pragma once

#include <expected>
#include <string>

#include "platform/posix/volume_meter.h"

namespace dunmere {

/// Space and label of the volume that `path` lies on and `device` is the source of. May wait for ever. Fails with an
/// errno value. Any thread.
std::expected<VolumeReading, int> readVolume(const std::string& path, const std::string& device);

}  // namespace dunmere
