#include "platform/desktop/folder_chooser.h"
#include "platform/desktop/platform_desktop.h"
#include "platform/macos/objective_c.h"
#include "platform/trash.h"

namespace dunmere {
namespace {

using objective_c::classNamed;
using objective_c::send;

id sharedWorkspace() {
  return send(classNamed("NSWorkspace"), "sharedWorkspace");
}

class WorkspaceUrlOpener final : public UrlOpener {
 public:
  bool open(const std::string& url) override {
    const objective_c::AutoreleasePool pool;
    const id parsed = send(classNamed("NSURL"), "URLWithString:", objective_c::stringOf(url));
    return parsed != nullptr && send<BOOL>(sharedWorkspace(), "openURL:", parsed);
  }
};

/// The folder dialog is Qt's, which shows the system's own; the Finder and the Trash are reached without it.
class MacosDesktop final : public Desktop {
 public:
  explicit MacosDesktop(FileSystem& fileSystem) : trash_(fileSystem) {}

  std::optional<FileUrl> chooseFolder(const std::string& message) override { return showFolderChooser(message); }

  void reveal(const FileUrl& url) override {
    const objective_c::AutoreleasePool pool;
    const id item = objective_c::fileUrlOf(url.path());
    if (item == nullptr) return;  // an array takes no nil
    const id items = send(classNamed("NSArray"), "arrayWithObject:", item);
    send<void>(sharedWorkspace(), "activateFileViewerSelectingURLs:", items);
  }

  std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) override { return trash_.hold(url); }

 private:
  Trash trash_;
};

}  // namespace

std::unique_ptr<UrlOpener> makePlatformUrlOpener() {
  return std::make_unique<WorkspaceUrlOpener>();
}

std::unique_ptr<Desktop> makePlatformDesktop(FileSystem& fileSystem, UrlOpener&) {
  return std::make_unique<MacosDesktop>(fileSystem);
}

bool hasGraphicsProcessor(const std::string&) {
  return true;  // every Mac has one
}

}  // namespace dunmere
