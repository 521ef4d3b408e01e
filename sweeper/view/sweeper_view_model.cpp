#include "sweeper/view/sweeper_view_model.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/listing/column_rows.h"
#include "engine/sweeper_values.h"

namespace dunmere {
namespace {

template <typename Element>
const Element* elementAt(const std::vector<Element>& list, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= list.size()) return nullptr;
  return &list[static_cast<std::size_t>(index)];
}

}  // namespace

SweeperViewModel::SweeperViewModel(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread,
                                   Background& background, BoolBinding pendingGoToDrives, QObject* parent)
    : QObject(parent), pane_(fileSystem, desktop, mainThread, background, std::move(pendingGoToDrives)) {
  pane_.setListener([this] { paneChanged(); });
  shown_ = readPane();
}

void SweeperViewModel::selectVolume(int row) {
  if (row == -1) {
    pane_.selectVolume(std::nullopt);
  } else if (const SweeperVolume* volume = elementAt(pane_.volumes(), row)) {
    pane_.selectVolume(volume->id());
  }
}

void SweeperViewModel::selectRow(int column, int row) {
  const ColumnRows* rows = elementAt(pane_.columnChildren(), column);
  if (!rows || row < 0 || static_cast<std::size_t>(row) >= rows->size()) return;
  pane_.selectItem((*rows)[static_cast<std::size_t>(row)], static_cast<std::size_t>(column));
}

SweeperViewModel::Shown SweeperViewModel::readPane() const {
  return {.browsing = pane_.phase() == Phase::browsing,
          .loadErrorText = QString::fromStdString(pane_.loadError().value_or(std::string())),
          .selectedVolume = selectedVolumeRow(),
          .canSweepSelected = pane_.selectedVolumeID().has_value(),
          .showsStatusStrip = pane_.showsStatusStrip(),
          .statusStripText = QString::fromStdString(pane_.statusStripText()),
          .footerStatus = QString::fromStdString(pane_.footerStatus()),
          .canTrash = pane_.canTrashSelection(),
          .canReveal = pane_.revealURL() != nullptr,
          .trashConfirmTitle = QString::fromStdString(pane_.trashConfirmTitle()),
          .confirmTrash = pane_.confirmTrash()};
}

int SweeperViewModel::selectedVolumeRow() const {
  const std::vector<SweeperVolume>& volumes = pane_.volumes();
  const auto selected = std::ranges::find_if(
      volumes, [&](const SweeperVolume& volume) { return volume.id() == pane_.selectedVolumeID(); });
  return selected == volumes.end() ? -1 : static_cast<int>(selected - volumes.begin());
}

void SweeperViewModel::paneChanged() {
  const Shown before = std::exchange(shown_, readPane());
  volumes_.update(pane_.volumes());
  columns_.update(pane_);
  tellChangesSince(before);
}

void SweeperViewModel::tellChangesSince(const Shown& before) {
  if (before.browsing != shown_.browsing) Q_EMIT browsingChanged();
  if (before.loadErrorText != shown_.loadErrorText) Q_EMIT loadErrorTextChanged();
  if (before.selectedVolume != shown_.selectedVolume) Q_EMIT selectedVolumeChanged();
  if (before.canSweepSelected != shown_.canSweepSelected) Q_EMIT canSweepSelectedChanged();
  if (before.showsStatusStrip != shown_.showsStatusStrip) Q_EMIT showsStatusStripChanged();
  if (before.statusStripText != shown_.statusStripText) Q_EMIT statusStripTextChanged();
  if (before.footerStatus != shown_.footerStatus) Q_EMIT footerStatusChanged();
  if (before.canTrash != shown_.canTrash) Q_EMIT canTrashChanged();
  if (before.canReveal != shown_.canReveal) Q_EMIT canRevealChanged();
  if (before.trashConfirmTitle != shown_.trashConfirmTitle) Q_EMIT trashConfirmTitleChanged();
  if (before.confirmTrash != shown_.confirmTrash) Q_EMIT confirmTrashChanged();
}

}  // namespace dunmere
