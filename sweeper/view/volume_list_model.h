// VolumeListModel: the drives of the picker.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QAbstractListModel>
#include <vector>

#include "engine/sweeper_values.h"

namespace dunmere {

/// A row is the same row as long as its volume's id is: a fresh list of the volumes changes only what differs. Main
/// thread.
class VolumeListModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Volumes come from a SweeperViewModel.")

 public:
  enum Role { NameRole = Qt::UserRole + 1, DetailTextRole };

  using QAbstractListModel::QAbstractListModel;

  void update(const std::vector<SweeperVolume>& volumes);

  int count() const { return static_cast<int>(volumes_.size()); }
  int rowCount(const QModelIndex& parent = QModelIndex()) const override { return parent.isValid() ? 0 : count(); }
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override { return {{NameRole, "name"}, {DetailTextRole, "detailText"}}; }

 private:
  void remove(int row);
  void bringTo(int row, const SweeperVolume& volume);

  std::vector<SweeperVolume> volumes_;
};

}  // namespace dunmere
