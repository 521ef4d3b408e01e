// What the application needs of the user's desktop, as the system that the program was built for has it.
#pragma once

#include <memory>
#include <string>

#include "engine/file_system.h"
#include "sweeper/desktop.h"

namespace dunmere {

/// Asks the system to open a URL with whatever application is responsible for it. Main thread only.
class UrlOpener {
 public:
  virtual ~UrlOpener() = default;

  /// `url` is percent-encoded ASCII. True when the system took the request, false when `url` is malformed or nothing
  /// here opens it; a refused URL has no effect at all, so that a caller may try another one.
  virtual bool open(const std::string& url) = 0;
};

// The build picks the implementations.

/// Never null. A URL that belongs to another system ("x-apple.systempreferences" on Linux) is declined and starts
/// nothing, not even a search for an application. Main thread only; needs a QApplication.
std::unique_ptr<UrlOpener> makePlatformUrlOpener();

/// Never null. `fileSystem` names volumes, `urlOpener` may open folders; both must outlive the desktop. Main thread
/// only; needs a QApplication.
std::unique_ptr<Desktop> makePlatformDesktop(FileSystem& fileSystem, UrlOpener& urlOpener);

/// Whether this machine has a graphics processor, by the devices in the folder `devices` that drivers offer to
/// programs. Without one OpenGL is emulated: that slows down the start and every frame, and takes processor time from
/// the sweep. Any thread.
bool hasGraphicsProcessor(const std::string& devices = "/dev");

}  // namespace dunmere
