// moveToTrashWithFileManager: the bare move to the Trash as the system does it, without any guard.
#pragma once

#include <expected>
#include <string>

namespace dunmere {

/// Moves what is at `path` (absolute; a link itself) to the Trash of its volume and waits for it. Gives its new path,
/// empty when the system does not tell. Fails with an errno value: ENOTSUP when the volume has no Trash, EIO when the
/// reason is unknown. Any thread.
std::expected<std::string, int> moveToTrashWithFileManager(const std::string& path);

}  // namespace dunmere
