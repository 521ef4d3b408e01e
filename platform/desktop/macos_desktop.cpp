#include "platform/desktop/folder_chooser.h"
#include "platform/desktop/graphics_processor.h"
#include "platform/desktop/platform_desktop.h"
#include "platform/macos/macos_trash.h"
#include "platform/macos/workspace.h"

namespace dunmere {

namespace {

class WorkspaceUrlOpener final : public UrlOpener {
 public:
  bool open(const std::string& url) override { return openUrl(url); }
};

/// The folder dialog is Qt's, which shows the system's own; the Finder and the Trash are reached without it.
class MacosDesktop final : public Desktop {
 public:
  explicit MacosDesktop(FileSystem& fileSystem) : trash_(fileSystem) {}

  std::optional<FileUrl> chooseFolder(const std::string& message) override { return folderChooser_.choose(message); }
  void reveal(const FileUrl& url) override { revealItem(url.path()); }
  std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) override { return trash_.hold(url); }

 private:
  FolderChooser folderChooser_;
  MacosTrash trash_;
};

}  // namespace

bool hasGraphicsProcessor(const std::string&) {
  return true;  // every Mac has one
}

std::unique_ptr<UrlOpener> makePlatformUrlOpener() {
  return std::make_unique<WorkspaceUrlOpener>();
}

std::unique_ptr<Desktop> makePlatformDesktop(FileSystem& fileSystem, UrlOpener&) {
  return std::make_unique<MacosDesktop>(fileSystem);
}

}  // namespace dunmere
