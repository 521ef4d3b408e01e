// moveToTrashWithGio: the bare move to the Trash as GIO does it, without any guard.
#pragma once

#include <string>
#include <system_error>

namespace dunmere {

/// Moves what is at `path` (absolute, raw bytes; a link itself) to the Trash that belongs to its volume and waits for
/// it. Gives no code when GIO reports success, otherwise an errno value in std::generic_category: ENOTSUP when GIO has
/// no Trash for the item, EIO when it names no reason. GIO reads HOME and XDG_DATA_HOME once per process. Any thread.
std::error_code moveToTrashWithGio(const std::string& path);

}  // namespace dunmere
