// The user's desktop, as the system that the program was built for has it.
#pragma once

#include <memory>

#include "engine/file_system.h"
#include "platform/desktop/url_opener.h"
#include "sweeper/desktop.h"

namespace dunmere {

/// Never null. Main thread only; needs a QApplication. The build picks the implementation.
std::unique_ptr<UrlOpener> makePlatformUrlOpener();

/// `fileSystem` names volumes; both must outlive the desktop. As above.
std::unique_ptr<Desktop> makePlatformDesktop(FileSystem& fileSystem, UrlOpener& urlOpener);

}  // namespace dunmere
