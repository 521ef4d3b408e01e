#include "sweeper/view/column_list_model.h"

#include <algorithm>
#include <utility>

#include "sweeper/view/shown_text.h"

namespace dunmere {

void ColumnListModel::update(const DiskSweeperPane& pane) {
  const std::vector<FileUrl>& folders = pane.pathDirectories();
  const std::size_t open = std::min(folders.size(), pane.columnChildren().size());
  std::size_t kept = 0;
  while (kept < std::min(open, columns_.size()) && columns_[kept].folder == folders[kept]) ++kept;
  closeColumnsFrom(kept);
  for (std::size_t depth = 0; depth < kept; ++depth) updateColumn(depth, pane);
  openColumnsUpTo(open, pane);
}

QVariant ColumnListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const Column& column = columns_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case RowsRole:
      return QVariant::fromValue(column.rows);
    case FolderNameRole:
      return shownText(column.folder.lastPathComponent());
    case IsReadingRole:
      return column.isReading;
    default:
      return {};
  }
}

void ColumnListModel::updateColumn(std::size_t depth, const DiskSweeperPane& pane) {
  Column& column = columns_[depth];
  column.rows->update(pane.columnChildren()[depth], pane.selectedRow(depth));
  const bool isReading = pane.isReadingColumn(depth);
  if (std::exchange(column.isReading, isReading) == isReading) return;
  const QModelIndex changed = index(static_cast<int>(depth));
  Q_EMIT dataChanged(changed, changed, {IsReadingRole});
}

void ColumnListModel::closeColumnsFrom(std::size_t depth) {
  if (depth >= columns_.size()) return;
  const std::vector<Column> closed(columns_.begin() + static_cast<std::ptrdiff_t>(depth), columns_.end());
  beginRemoveRows({}, static_cast<int>(depth), count() - 1);
  columns_.resize(depth);
  endRemoveRows();
  // Views destroy their items later in the event loop; the models that these show must outlive them.
  for (const Column& column : closed) column.rows->deleteLater();
}

void ColumnListModel::openColumnsUpTo(std::size_t open, const DiskSweeperPane& pane) {
  if (open <= columns_.size()) return;
  std::vector<Column> opened;
  for (std::size_t depth = columns_.size(); depth < open; ++depth) {
    opened.push_back({pane.pathDirectories()[depth], new RowListModel(this), pane.isReadingColumn(depth)});
    opened.back().rows->update(pane.columnChildren()[depth], pane.selectedRow(depth));
  }
  beginInsertRows({}, count(), static_cast<int>(open) - 1);
  columns_.insert(columns_.end(), opened.begin(), opened.end());
  endInsertRows();
}

}  // namespace dunmere
