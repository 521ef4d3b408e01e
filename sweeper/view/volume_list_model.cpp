#include "sweeper/view/volume_list_model.h"

#include <algorithm>

#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/view/shown_text.h"

namespace dunmere {
namespace {

/// The first row from `first` on that shows the volume with this one's id, -1 for none.
int rowOf(const SweeperVolume& volume, const std::vector<SweeperVolume>& volumes, int first = 0) {
  const auto found = std::find_if(volumes.begin() + first, volumes.end(),
                                  [&](const SweeperVolume& other) { return other.id() == volume.id(); });
  return found == volumes.end() ? -1 : static_cast<int>(found - volumes.begin());
}

}  // namespace

void VolumeListModel::update(const std::vector<SweeperVolume>& volumes) {
  for (int row = count() - 1; row >= 0; --row) {
    if (rowOf(volumes_[static_cast<std::size_t>(row)], volumes) < 0) remove(row);
  }
  int row = 0;
  for (const SweeperVolume& volume : volumes) bringTo(row++, volume);
  while (count() > row) remove(row);  // one that was listed twice
}

void VolumeListModel::remove(int row) {
  beginRemoveRows({}, row, row);
  volumes_.erase(volumes_.begin() + row);
  endRemoveRows();
}

/// Moves or inserts the volume's row; the rows above it are in their places.
void VolumeListModel::bringTo(int row, const SweeperVolume& volume) {
  const auto target = volumes_.begin() + row;
  const int now = rowOf(volume, volumes_, row);
  if (now < 0) {
    beginInsertRows({}, row, row);
    volumes_.insert(target, volume);
    return endInsertRows();
  }
  if (now != row) {
    beginMoveRows({}, now, now, {}, row);
    std::rotate(target, volumes_.begin() + now, volumes_.begin() + now + 1);
    endMoveRows();
  }
  if (*target == volume) return;
  *target = volume;
  Q_EMIT dataChanged(index(row), index(row));
}

QVariant VolumeListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const SweeperVolume& volume = volumes_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case NameRole:
      return shownText(volume.name);
    case DetailTextRole:
      return QString::fromStdString(DiskSweeperPane::volumeDetailText(volume));
    default:
      return {};
  }
}

}  // namespace dunmere
