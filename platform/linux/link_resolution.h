// What a symbolic link leads to in the end.
#pragma once

#include <expected>
#include <string>

#include "engine/file_system.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// Finds the target of the link `name` in the open folder `folder`, without opening it for reading. May wait for the
/// disks and servers on the way. Fails with an errno value. Any thread.
std::expected<UniqueDescriptor, int> findTarget(int folder, const std::string& name);

/// Describes a target that was found. `ownUrl` is the answer's path when the target has no path of its own. Waits for
/// nothing. Any thread.
LinkTarget describeTarget(const UniqueDescriptor& target, FileUrl ownUrl);

}  // namespace dunmere
