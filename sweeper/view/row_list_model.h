// RowListModel: the rows of one column, kept up to date by the smallest changes.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QAbstractListModel>
#include <QPersistentModelIndex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "engine/listing/column_rows.h"
#include "engine/listing/list_changes.h"

namespace dunmere {

/// Shows one folder for its whole life. It compares nothing: rows come with what changed since those before, and it
/// removes, moves and inserts just these, so that scroll position, keyboard focus and a pressed mouse button stay with
/// their row. It never resets. Main thread.
class RowListModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Rows come from the columns of a SweeperViewModel.")
  /// The row that the mouse button went down on, -1 for none. Follows the row; -1 when the row goes.
  Q_PROPERTY(int pressedRow READ pressedRow WRITE setPressedRow NOTIFY pressedRowChanged FINAL)
  /// The row that the keyboard acts on, -1 for none. Follows the row; when the row goes, the row that takes its
  /// position.
  Q_PROPERTY(int focusedRow READ focusedRow WRITE setFocusedRow NOTIFY focusedRowChanged FINAL)

 public:
  enum Role {
    NameRole = Qt::UserRole + 1,
    SizeTextRole,
    AccessibleTextRole,
    IsDirectoryRole,
    IsSymbolicLinkRole,
    IsCompleteZeroRole,  ///< nothing counted and nothing to come
    SelectedRole,
  };

  using QAbstractListModel::QAbstractListModel;

  /// Shows `rows`, children of one folder, and marks the one at `selectedRow`. Applies the changes that come with them
  /// when they follow the rows that are shown, else replaces all rows.
  void update(const ColumnRows& rows, std::optional<std::size_t> selectedRow);

  int count() const { return count_; }
  int pressedRow() const { return pressedRow_.row(); }
  void setPressedRow(int row);
  int focusedRow() const { return focusedRow_.row(); }
  void setFocusedRow(int row);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override { return parent.isValid() ? 0 : count(); }
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 Q_SIGNALS:
  void pressedRowChanged();
  void focusedRowChanged();
  void aboutToUpdate();  ///< an update that changes which rows stand where begins
  void updated();        ///< and has ended

 private:
  // Names a row: one of shown_, or while an update brings in new rows one of next_.
  using RowId = std::uint32_t;
  static constexpr RowId kOfNext = RowId{1} << 31;

  struct Row {
    const ColumnRows& rows;
    std::size_t index;
    bool isSelected;
  };

  static QString sizeText(const Row& row);
  static QString accessibleText(const Row& row);

  Row rowAt(std::size_t position) const;
  void changeRows();
  void applySteps(const std::vector<ListChange>& steps);
  void resort(const ListMatch& match);
  void removeAll(const std::vector<std::size_t>& newRows);
  void removeRange(std::size_t first, std::size_t count);
  void insertRange(std::size_t first, const std::vector<RowId>& added);
  void moveRow(std::size_t from, std::size_t to);
  void sortRows(const std::function<std::vector<std::size_t>()>& sort);
  void tellValues(const std::vector<std::pair<std::size_t, std::size_t>>& runs);
  void keepPlaces(const std::function<void()>& change);

  ColumnRows shown_;
  ColumnRows next_;           // what an update leads to
  std::vector<RowId> order_;  // empty between updates, when every row of shown_ stands in turn
  int count_ = 0;
  std::optional<std::size_t> selectedRow_;      // of shown_
  std::optional<std::size_t> nextSelectedRow_;  // of next_
  QPersistentModelIndex pressedRow_;
  QPersistentModelIndex focusedRow_;
};

}  // namespace dunmere
