// ContentModel: which pane the window shows, and the sidebar's request to go back to the drives.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <memory>
#include <optional>

#include "engine/file_system.h"
#include "platform/desktop/platform_desktop.h"
#include "sweeper/background.h"
#include "sweeper/desktop.h"
#include "sweeper/main_thread.h"
#include "sweeper/view/sweeper_view_model.h"

namespace dunmere {

/// The entries of the sidebar, from top to bottom.
enum class SidebarItem { freeSpace, settings };

/// Keeps no state of a sweep: that lives in the pane, which exists only while it is shown. Main thread. The
/// collaborators must outlive every scan.
class ContentModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Made by the application, with its collaborators.")
  Q_PROPERTY(bool freeSpaceSelected READ freeSpaceSelected NOTIFY selectionChanged FINAL)
  Q_PROPERTY(bool settingsSelected READ settingsSelected NOTIFY selectionChanged FINAL)
  Q_PROPERTY(dunmere::SweeperViewModel* pane READ pane NOTIFY paneChanged FINAL)

 public:
  ContentModel(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread, Background& background,
               UrlOpener& urlOpener, QObject* parent = nullptr);
  ~ContentModel() override;

  /// None shows the sweeper, like freeSpace.
  std::optional<SidebarItem> selection() const { return selection_; }
  void setSelection(std::optional<SidebarItem> selection);
  bool freeSpaceSelected() const { return selection_ == SidebarItem::freeSpace; }
  bool settingsSelected() const { return selection_ == SidebarItem::settings; }

  /// Raised here, lowered by the pane alone.
  bool pendingGoToDrives() const { return pendingGoToDrives_; }

  /// The shown sweeper pane, fresh each time the sweeper comes on screen; null while the settings are shown.
  SweeperViewModel* pane() const { return pane_.get(); }

  Q_INVOKABLE void selectFreeSpace() { setSelection(SidebarItem::freeSpace); }
  Q_INVOKABLE void selectSettings() { setSelection(SidebarItem::settings); }
  Q_INVOKABLE void goToDrives();
  Q_INVOKABLE void openFullDiskAccess();

 Q_SIGNALS:
  void selectionChanged();
  void pendingGoToDrivesChanged();
  void paneChanged();

 private:
  /// Deletes a pane after its views, which the event loop deletes too; lists inside them delete their rows one turn of
  /// the loop later than the outermost view.
  struct DeleteAfterViews {
    void operator()(QObject* pane) const {
      QMetaObject::invokeMethod(pane, &QObject::deleteLater, Qt::QueuedConnection);
    }
  };

  void makePane();
  void setPendingGoToDrives(bool pending);

  FileSystem& fileSystem_;
  Desktop& desktop_;
  MainThread& mainThread_;
  Background& background_;
  UrlOpener& urlOpener_;
  std::optional<SidebarItem> selection_ = SidebarItem::freeSpace;
  bool pendingGoToDrives_ = false;
  std::unique_ptr<SweeperViewModel, DeleteAfterViews> pane_;
};

}  // namespace dunmere
