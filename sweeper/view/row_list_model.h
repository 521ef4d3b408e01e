// RowListModel: the rows of one column, kept up to date by the smallest changes.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QAbstractListModel>
#include <QPersistentModelIndex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "engine/row_order.h"
#include "engine/sweeper_item.h"
#include "sweeper/view/list_changes.h"
#include "sweeper/view/shown_rows.h"

namespace dunmere {

/// Shows one folder for its whole life. A row is the same row as long as its name is: an update removes, moves and
/// inserts only the rows that differ and then tells which values changed, so that scroll position, keyboard focus and a
/// pressed mouse button stay with their row. It never resets. Main thread.
class RowListModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("Rows come from the columns of a SweeperViewModel.")
  Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)
  /// The row that the mouse button went down on, -1 for none. Follows the row; -1 when the row goes.
  Q_PROPERTY(int pressedRow READ pressedRow WRITE setPressedRow NOTIFY pressedRowChanged FINAL)
  /// The row that the keyboard acts on, -1 for none. Follows the row; when the row goes, the one in its place is it.
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

  /// An update that needs more row steps than this re-sorts the rows in place instead. With Qt 6.4 and 100,000 rows a
  /// move with all that a view does for it takes 0.1 ms, so that 250 stay within two frames; sorting in place costs
  /// about as much as 50 moves, however many rows move.
  static constexpr std::size_t kMostRowSteps = 250;

  explicit RowListModel(QObject* parent = nullptr);

  /// Makes the rows those of `items`, which are children of one folder. `selectedRow` is an index into `items`. Rows
  /// that come with numbers of the same edition as those before are told by these, others by name; with the same
  /// revision too nothing but the selection is looked at.
  void update(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow, RowNumbers numbers = {});

  int count() const { return static_cast<int>(order_.size()); }
  int pressedRow() const { return pressedRow_.row(); }
  void setPressedRow(int row);
  int focusedRow() const { return focusedRow_.row(); }
  void setFocusedRow(int row);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 signals:
  void countChanged();
  void pressedRowChanged();
  void focusedRowChanged();
  void aboutToUpdate();  ///< an update that changes which rows stand where begins
  void updated();        ///< and has ended

 private:
  // Names a row: one of shown_, or while an update brings in new rows one of next_.
  using RowId = std::uint32_t;
  static constexpr RowId kOfNext = RowId{1} << 31;

  static QString sizeText(const ShownRow& row);
  static QString accessibleText(const ShownRow& row);

  const ShownRow& rowAt(std::size_t position) const;
  ListMatch matchNext(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow,
                      RowNumbers numbers);
  void applySteps(const std::vector<ListChange>& steps);
  void resort(const ListMatch& match);
  void removeRange(std::size_t first, std::size_t count);
  void insertRange(std::size_t first, const std::vector<RowId>& added);
  void moveRow(std::size_t from, std::size_t to);
  void reorder(const std::vector<std::size_t>& oldPositions);
  void showNext();

  ShownRows shown_;
  ShownRows next_;            // what an update leads to; empty between updates
  std::vector<RowId> order_;  // between updates every row of shown_ in turn
  std::uint64_t edition_ = 0;
  std::uint64_t revision_ = 0;
  std::optional<std::size_t> selectedRow_;
  std::vector<RowPosition> numbers_;  // of shown_ in turn, when there is an edition
  QPersistentModelIndex pressedRow_;
  QPersistentModelIndex focusedRow_;
};

}  // namespace dunmere
