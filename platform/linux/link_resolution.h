// resolvedLink: what a symbolic link leads to in the end.
#pragma once

#include <string>

#include "engine/file_system.h"

namespace dunmere {

/// Follows the link `name` in the open folder `folder`. `ownUrl` is the answer's path when the target is missing, out
/// of reach, or has no path of its own. The target is neither opened for reading nor waited for. Any thread.
LinkTarget resolvedLink(int folder, const std::string& name, FileUrl ownUrl);

}  // namespace dunmere
