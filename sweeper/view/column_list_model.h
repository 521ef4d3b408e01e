// ColumnListModel: the open columns, root first, each with the model of its rows.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QAbstractListModel>
#include <cstddef>
#include <vector>

#include "engine/file_url.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/view/row_list_model.h"

namespace dunmere {

/// A column keeps its RowListModel as long as it shows the same folder at the same depth; another folder is another
/// column, which starts at its top. Main thread.
class ColumnListModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Columns come from a SweeperViewModel.")

 public:
  enum Role { RowsRole = Qt::UserRole + 1, FolderNameRole, IsReadingRole };

  using QAbstractListModel::QAbstractListModel;

  void update(const DiskSweeperPane& pane);

  int count() const { return static_cast<int>(columns_.size()); }
  int rowCount(const QModelIndex& parent = QModelIndex()) const override { return parent.isValid() ? 0 : count(); }
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override {
    return {{RowsRole, "rows"}, {FolderNameRole, "folderName"}, {IsReadingRole, "isReading"}};
  }

 private:
  struct Column {
    FileUrl folder;
    RowListModel* rows = nullptr;  // a child of this model
    bool isReading = false;        // has no rows yet
  };

  void updateColumn(std::size_t depth, const DiskSweeperPane& pane);
  void closeColumnsFrom(std::size_t depth);
  void openColumnsUpTo(std::size_t count, const DiskSweeperPane& pane);

  std::vector<Column> columns_;
};

}  // namespace dunmere
