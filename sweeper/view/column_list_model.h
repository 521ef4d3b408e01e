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
  Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)

 public:
  enum Role { RowsRole = Qt::UserRole + 1, FolderNameRole, IsReadingRole };

  explicit ColumnListModel(QObject* parent = nullptr);

  void update(const DiskSweeperPane& pane);

  int count() const { return static_cast<int>(columns_.size()); }
  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 Q_SIGNALS:
  void countChanged();

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
