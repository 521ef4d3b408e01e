#include "shell/content_model.h"

#include "shell/system_settings_links.h"

namespace dunmere {

ContentModel::ContentModel(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread, Background& background,
                           UrlOpener& urlOpener, QObject* parent)
    : QObject(parent),
      fileSystem_(fileSystem),
      desktop_(desktop),
      mainThread_(mainThread),
      background_(background),
      urlOpener_(urlOpener) {
  makePane();
}

// At the end the views are gone, and so may be the event loop.
ContentModel::~ContentModel() {
  delete pane_.release();
}

void ContentModel::setSelection(std::optional<SidebarItem> selection) {
  if (selection_ == selection) return;
  const bool shownBefore = !settingsSelected();
  selection_ = selection;
  const bool shownNow = !settingsSelected();
  // A view of the pane appears after the pane and is gone before it.
  if (shownNow && !shownBefore) makePane();
  Q_EMIT selectionChanged();
  if (shownNow || !shownBefore) return;
  pane_.reset();
  Q_EMIT paneChanged();
}

void ContentModel::goToDrives() {
  setSelection(SidebarItem::freeSpace);
  setPendingGoToDrives(true);
}

void ContentModel::openFullDiskAccess() {
  SystemSettingsLinks::openFullDiskAccess(urlOpener_);
}

void ContentModel::makePane() {
  pane_.reset(new SweeperViewModel(
      fileSystem_, desktop_, mainThread_, background_,
      {.get = [this] { return pendingGoToDrives_; }, .set = [this](bool pending) { setPendingGoToDrives(pending); }}));
  Q_EMIT paneChanged();
}

void ContentModel::setPendingGoToDrives(bool pending) {
  if (pendingGoToDrives_ == pending) return;
  pendingGoToDrives_ = pending;
  Q_EMIT pendingGoToDrivesChanged();
  if (pane_) pane_->pendingGoToDrivesChanged();
}

}  // namespace dunmere
