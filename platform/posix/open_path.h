// openPath: open(2) for a path of any length.
#pragma once

#include <expected>
#include <string_view>

#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// Opens `path` with `flags` as open(2) does. A path longer than the system's limit is opened in hops, folder by
/// folder, with the same meaning: links on the way are followed by the system. Fails with an errno value; a path that
/// holds a NUL byte fails with EINVAL rather than being cut short. Any thread.
std::expected<UniqueDescriptor, int> openPath(std::string_view path, int flags);

}  // namespace dunmere
