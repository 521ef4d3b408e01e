#include "platform/desktop/platform_desktop.h"
#include "platform/desktop/qt_desktop.h"
#include "platform/desktop/qt_url_opener.h"

namespace dunmere {

std::unique_ptr<UrlOpener> makePlatformUrlOpener() {
  return std::make_unique<QtUrlOpener>();
}

std::unique_ptr<Desktop> makePlatformDesktop(FileSystem& fileSystem, UrlOpener& urlOpener) {
  return std::make_unique<QtDesktop>(fileSystem, urlOpener);
}

}  // namespace dunmere
