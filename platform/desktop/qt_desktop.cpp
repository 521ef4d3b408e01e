#include "platform/desktop/qt_desktop.h"

#include <QDBusConnection>

#include "platform/desktop/file_manager.h"

namespace dunmere {

QtDesktop::QtDesktop(FileSystem& fileSystem, UrlOpener& urlOpener)
    : fileManager_(std::make_unique<FileManager>(QDBusConnection::sessionBus(), urlOpener)), trash_(fileSystem) {}

QtDesktop::~QtDesktop() = default;

std::optional<FileUrl> QtDesktop::chooseFolder(const std::string& message) {
  return folderChooser_.choose(message);
}

void QtDesktop::reveal(const FileUrl& url) {
  fileManager_->reveal(url);
}

std::unique_ptr<TrashableItem> QtDesktop::holdItem(const FileUrl& url) {
  return trash_.hold(url);
}

}  // namespace dunmere
