// QtDesktop: the user's desktop: a folder dialog, the file manager and the Trash.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "engine/file_system.h"
#include "platform/desktop/folder_chooser.h"
#include "platform/desktop/url_opener.h"
#include "platform/trash/trash.h"
#include "sweeper/desktop.h"

namespace dunmere {

class FileManager;

/// Main thread only; needs a QApplication.
class QtDesktop : public Desktop {
 public:
  /// `fileSystem` names volumes, `urlOpener` opens folders; both must outlive this object.
  QtDesktop(FileSystem& fileSystem, UrlOpener& urlOpener);
  ~QtDesktop() override;

  std::optional<FileUrl> chooseFolder(const std::string& message) override;
  void reveal(const FileUrl& url) override;
  std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) override;

 private:
  FolderChooser folderChooser_;
  std::unique_ptr<FileManager> fileManager_;
  Trash trash_;
};

}  // namespace dunmere
