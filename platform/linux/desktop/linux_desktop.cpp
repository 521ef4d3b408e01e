#include <QByteArray>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QUrl>
#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "platform/desktop/folder_chooser.h"
#include "platform/desktop/platform_desktop.h"
#include "platform/linux/desktop/file_manager.h"
#include "platform/trash.h"

namespace dunmere {
namespace {

namespace fs = std::filesystem;

class DefaultApplications final : public UrlOpener {
 public:
  bool open(const std::string& url) override {
    const QUrl parsed = QUrl::fromEncoded(QByteArray::fromStdString(url), QUrl::StrictMode);
    if (!parsed.isValid() || parsed.scheme().isEmpty()) return false;
    if (parsed.scheme() == QLatin1String("x-apple.systempreferences")) return false;
    return QDesktopServices::openUrl(parsed);
  }
};

class LinuxDesktop final : public Desktop {
 public:
  LinuxDesktop(FileSystem& fileSystem, UrlOpener& urlOpener)
      : fileManager_(QDBusConnection::sessionBus(), urlOpener), trash_(fileSystem) {}

  std::optional<FileUrl> chooseFolder(const std::string& message) override { return showFolderChooser(message); }
  void reveal(const FileUrl& url) override { fileManager_.reveal(url); }
  std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) override { return trash_.hold(url); }

 private:
  FileManager fileManager_;
  Trash trash_;
};

bool isRenderNode(const fs::directory_entry& entry) {
  return entry.path().filename().native().starts_with("renderD");
}

}  // namespace

std::unique_ptr<UrlOpener> makePlatformUrlOpener() {
  return std::make_unique<DefaultApplications>();
}

std::unique_ptr<Desktop> makePlatformDesktop(FileSystem& fileSystem, UrlOpener& urlOpener) {
  return std::make_unique<LinuxDesktop>(fileSystem, urlOpener);
}

bool hasGraphicsProcessor(const std::string& devices) {
  std::error_code ignored;  // a device that cannot be seen cannot be used either
  const fs::directory_iterator nodes(fs::path(devices) / "dri", ignored);
  if (std::ranges::any_of(nodes, isRenderNode)) return true;
  // NVIDIA's driver and that of Windows' own virtual machines offer theirs elsewhere.
  constexpr std::array kOthers = {"nvidiactl", "dxg"};
  return std::ranges::any_of(kOthers, [&](const char* name) { return fs::exists(fs::path(devices) / name, ignored); });
}

}  // namespace dunmere
