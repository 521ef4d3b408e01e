#include "sweeper/view/volume_list_model.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/view/shown_text.h"

namespace dunmere {
namespace {

std::vector<std::string> idsOf(const std::vector<SweeperVolume>& volumes) {
  std::vector<std::string> ids;
  for (const SweeperVolume& volume : volumes) ids.push_back(volume.id());
  return ids;
}

}  // namespace

VolumeListModel::VolumeListModel(QObject* parent) : QAbstractListModel(parent) {}

void VolumeListModel::update(const std::vector<SweeperVolume>& volumes) {
  const int countBefore = count();
  const std::vector<std::string> oldIds = idsOf(volumes_);
  const std::vector<std::string> newIds = idsOf(volumes);
  const ListMatch match = matchLists({oldIds.begin(), oldIds.end()}, {newIds.begin(), newIds.end()});
  const auto steps = listChanges(match, std::numeric_limits<std::size_t>::max());
  for (const ListChange& step : *steps) apply(step, volumes);
  for (std::size_t row = 0; row < volumes.size(); ++row) {
    if (volumes_[row] == volumes[row]) continue;
    volumes_[row] = volumes[row];
    const QModelIndex changed = index(static_cast<int>(row));
    Q_EMIT dataChanged(changed, changed);
  }
  if (count() != countBefore) Q_EMIT countChanged();
}

int VolumeListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
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

QHash<int, QByteArray> VolumeListModel::roleNames() const {
  return {{NameRole, "name"}, {DetailTextRole, "detailText"}};
}

void VolumeListModel::apply(const ListChange& step, const std::vector<SweeperVolume>& volumes) {
  const auto position = static_cast<int>(step.position);
  const int last = position + static_cast<int>(step.count) - 1;
  const auto target = static_cast<std::ptrdiff_t>(step.target);
  const auto count = static_cast<std::ptrdiff_t>(step.count);
  const auto row = volumes_.begin() + position;
  switch (step.kind) {
    case ListChange::Kind::remove:
      beginRemoveRows({}, position, last);
      volumes_.erase(row, row + count);
      endRemoveRows();
      break;
    case ListChange::Kind::move:
      // Qt names the row that the moved one is put before.
      beginMoveRows({}, position, position, {}, static_cast<int>(target > position ? target + 1 : target));
      if (target > position) {
        std::rotate(row, row + 1, volumes_.begin() + target + 1);
      } else {
        std::rotate(volumes_.begin() + target, row, row + 1);
      }
      endMoveRows();
      break;
    case ListChange::Kind::insert:
      beginInsertRows({}, position, last);
      volumes_.insert(row, volumes.begin() + target, volumes.begin() + target + count);
      endInsertRows();
      break;
  }
}

}  // namespace dunmere
