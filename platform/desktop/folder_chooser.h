// showFolderChooser: the modal dialog in which the user picks one existing folder.
#pragma once

#include <optional>
#include <string>

#include "engine/file_url.h"

namespace dunmere {

/// Takes the desktop's own dialog where there is one. It starts in the home folder every time, since no preference is
/// kept. `message` (UTF-8) is its title, since these dialogs have no other place for it. Other work of the main thread
/// goes on while it is open. None when cancelled. Main thread only; needs a QApplication.
///
/// The dialogs speak in text, not in bytes: a folder below a name that is not UTF-8 arrives with U+FFFD in it and could
/// be mistaken for another one. So nothing is returned for a path that holds U+FFFD or leads to no folder.
std::optional<FileUrl> showFolderChooser(const std::string& message);

}  // namespace dunmere
