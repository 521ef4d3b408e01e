// mountedVolumes: the system's list of mounted volumes.
#pragma once

#include <expected>
#include <vector>

#include "platform/macos/mounted_volume.h"

namespace dunmere {

/// All of them, hidden ones too, in the system's order. Waits for no volume. Fails with an errno value. Any thread.
std::expected<std::vector<MountedVolume>, int> mountedVolumes();

/// The volume that `path` lies on. May wait for ever. Fails with an errno value. Any thread.
std::expected<MountedVolume, int> volumeOf(const std::string& path);

}  // namespace dunmere
