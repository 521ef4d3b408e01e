#include "sweeper/view/row_list_model.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "sweeper/byte_count_text.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/view/shown_text.h"

namespace dunmere {
namespace {

constexpr std::size_t kNew = ListMatch::kNew;

int toInt(std::size_t row) {
  return static_cast<int>(row);
}

}  // namespace

void RowListModel::update(const ColumnRows& rows, std::optional<std::size_t> selectedRow) {
  if (rows.generation() == shown_.generation() && selectedRow == selectedRow_) return;
  const QPersistentModelIndex oldSelected(selectedRow_ ? index(toInt(*selectedRow_)) : QModelIndex());
  next_ = rows;
  nextSelectedRow_ = selectedRow;
  if (rows.generation() != shown_.generation()) changeRows();
  const bool isResorted = rows.generation() == shown_.generation();
  shown_ = std::exchange(next_, {});
  selectedRow_ = selectedRow;
  if (!isResorted) tellValues(rows.changes().shownAnew);
  const QModelIndex newSelected = selectedRow ? index(toInt(*selectedRow)) : QModelIndex();
  if (oldSelected == newSelected) return;
  if (oldSelected.isValid()) Q_EMIT dataChanged(oldSelected, oldSelected);
  if (newSelected.isValid()) Q_EMIT dataChanged(newSelected, newSelected);
}

/// Many runs are told as one: a view looks at the rows that it shows only.
void RowListModel::tellValues(const std::vector<std::pair<std::size_t, std::size_t>>& runs) {
  constexpr std::size_t kManyRuns = 100;
  if (runs.size() > kManyRuns) {
    Q_EMIT dataChanged(index(toInt(runs.front().first)), index(toInt(runs.back().second)));
    return;
  }
  for (const auto& [first, last] : runs) Q_EMIT dataChanged(index(toInt(first)), index(toInt(last)));
}

/// Brings the rows of next_ to where they belong.
void RowListModel::changeRows() {
  const ColumnChanges& changes = next_.changes();
  const bool follows = changes.since == shown_.generation();
  if (follows && changes.steps && changes.steps->empty()) return;
  order_.resize(shown_.size());
  std::iota(order_.begin(), order_.end(), RowId{0});
  keepPlaces([&] {
    if (!follows) {
      resort({shown_.size(), std::vector<std::size_t>(next_.size(), kNew)});
    } else if (changes.steps) {
      applySteps(*changes.steps);
    } else {
      resort(changes.match);
    }
  });
  order_.clear();
}

/// Tells what `change` does to the rows that the mouse and the keyboard are at.
void RowListModel::keepPlaces(const std::function<void()>& change) {
  const int pressedBefore = pressedRow();
  const int focusedBefore = focusedRow();
  Q_EMIT aboutToUpdate();
  change();
  if (pressedRow() != pressedBefore) Q_EMIT pressedRowChanged();
  const bool focusedGone = focusedBefore >= 0 && focusedRow() < 0;
  if (focusedGone) focusedRow_ = index(std::min(focusedBefore, count() - 1));
  if (focusedGone || focusedRow() != focusedBefore) Q_EMIT focusedRowChanged();
  Q_EMIT updated();
}

void RowListModel::setPressedRow(int row) {
  if (row == pressedRow()) return;
  pressedRow_ = QPersistentModelIndex(index(row));
  Q_EMIT pressedRowChanged();
}

void RowListModel::setFocusedRow(int row) {
  if (row == focusedRow()) return;
  focusedRow_ = QPersistentModelIndex(index(row));
  Q_EMIT focusedRowChanged();
}

QVariant RowListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const Row row = rowAt(static_cast<std::size_t>(index.row()));
  const ColumnRow& facts = row.rows.row(row.index);
  switch (role) {
    case NameRole:
      return shownText(row.rows.name(row.index));
    case SizeTextRole:
      return sizeText(row);
    case AccessibleTextRole:
      return accessibleText(row);
    case IsDirectoryRole:
      return facts.isDirectory;
    case IsSymbolicLinkRole:
      return facts.isSymbolicLink;
    case IsCompleteZeroRole:
      return facts.sizeBytes == 0 && !row.rows.sizeIsPartialMinimum(row.index);
    case SelectedRole:
      return row.isSelected;
    default:
      return {};
  }
}

QHash<int, QByteArray> RowListModel::roleNames() const {
  return {{NameRole, "name"},
          {SizeTextRole, "sizeText"},
          {AccessibleTextRole, "accessibleText"},
          {IsDirectoryRole, "isDirectory"},
          {IsSymbolicLinkRole, "isSymbolicLink"},
          {IsCompleteZeroRole, "isCompleteZero"},
          {SelectedRole, "selected"}};
}

QString RowListModel::sizeText(const Row& row) {
  SweeperItem item;
  item.sizeBytes = row.rows.row(row.index).sizeBytes;
  item.sizeIsPartialMinimum = row.rows.sizeIsPartialMinimum(row.index);
  return QString::fromStdString(DiskSweeperPane::sizeLabel(item));
}

QString RowListModel::accessibleText(const Row& row) {
  const ColumnRow& facts = row.rows.row(row.index);
  const QString kind = facts.isSymbolicLink ? (facts.isDirectory ? tr("link to a folder") : tr("link"))
                                            : (facts.isDirectory ? tr("folder") : tr("file"));
  QString size = QString::fromStdString(byteCountText(facts.sizeBytes));
  if (row.rows.sizeIsPartialMinimum(row.index)) size = tr("at least %1").arg(size);
  return QStringList{shownText(row.rows.name(row.index)), kind, size}.join(QLatin1String(", "));
}

RowListModel::Row RowListModel::rowAt(std::size_t position) const {
  const RowId id = order_.empty() ? static_cast<RowId>(position) : order_[position];
  const std::size_t index = id & ~kOfNext;
  if ((id & kOfNext) != 0) return {next_, index, index == nextSelectedRow_};
  return {shown_, index, index == selectedRow_};
}

void RowListModel::applySteps(const std::vector<ListChange>& steps) {
  for (const ListChange& step : steps) {
    switch (step.kind) {
      case ListChange::Kind::remove:
        removeRange(step.position, step.count);
        break;
      case ListChange::Kind::move:
        moveRow(step.position, step.target);
        break;
      case ListChange::Kind::insert: {
        std::vector<RowId> added(step.count);
        std::iota(added.begin(), added.end(), kOfNext | static_cast<RowId>(step.target));
        insertRange(step.position, added);
        break;
      }
    }
  }
}

// Few steps whatever changed: the rows that go are sorted to the end and removed there, the new ones are added there,
// and all are sorted into their order, with their new values. A view keeps its place, for no row above it comes or
// goes.
void RowListModel::resort(const ListMatch& match) {
  std::vector<std::size_t> newRows(match.oldCount, kNew);
  std::vector<RowId> added;
  for (std::size_t row = 0; row < match.oldIndex.size(); ++row) {
    if (match.oldIndex[row] == kNew) {
      added.push_back(kOfNext | static_cast<RowId>(row));
    } else {
      newRows[match.oldIndex[row]] = row;
    }
  }
  removeAll(newRows);
  insertRange(order_.size(), added);
  sortRows([&] {
    std::vector<std::size_t> positions;
    for (const RowId id : order_) positions.push_back((id & kOfNext) != 0 ? id & ~kOfNext : newRows[id]);
    order_.clear();
    shown_ = next_;
    selectedRow_ = nextSelectedRow_;
    return positions;
  });
}

/// Removes the rows that have no new row.
void RowListModel::removeAll(const std::vector<std::size_t>& newRows) {
  const auto isKept = [&newRows](RowId id) { return newRows[id] != kNew; };
  const auto kept = static_cast<std::size_t>(std::ranges::count_if(order_, isKept));
  if (!std::ranges::is_partitioned(order_, isKept)) {
    sortRows([&] {
      std::vector<std::size_t> positions;
      std::size_t nextKept = 0;
      std::size_t nextGone = kept;
      for (const RowId id : order_) positions.push_back(isKept(id) ? nextKept++ : nextGone++);
      std::ranges::stable_partition(order_, isKept);
      return positions;
    });
  }
  removeRange(kept, order_.size() - kept);
}

void RowListModel::removeRange(std::size_t first, std::size_t count) {
  if (count == 0) return;
  beginRemoveRows({}, toInt(first), toInt(first + count) - 1);
  const auto begin = order_.begin() + static_cast<std::ptrdiff_t>(first);
  order_.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
  count_ = toInt(order_.size());
  endRemoveRows();
}

void RowListModel::insertRange(std::size_t first, const std::vector<RowId>& added) {
  if (added.empty()) return;
  beginInsertRows({}, toInt(first), toInt(first + added.size()) - 1);
  order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(first), added.begin(), added.end());
  count_ = toInt(order_.size());
  endInsertRows();
}

void RowListModel::moveRow(std::size_t from, std::size_t to) {
  // Qt names the row that the moved one is put before.
  const std::size_t before = to > from ? to + 1 : to;
  beginMoveRows({}, toInt(from), toInt(from), {}, toInt(before));
  const auto begin = order_.begin();
  const auto source = begin + static_cast<std::ptrdiff_t>(from);
  const auto target = begin + static_cast<std::ptrdiff_t>(to);
  if (to > from) {
    std::rotate(source, source + 1, target + 1);
  } else {
    std::rotate(target, source, source + 1);
  }
  endMoveRows();
}

/// `sort` puts the rows in another order and tells where each of them went.
void RowListModel::sortRows(const std::function<std::vector<std::size_t>()>& sort) {
  Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
  const std::vector<std::size_t> positions = sort();
  const QModelIndexList held = persistentIndexList();
  for (const QModelIndex& was : held) {
    changePersistentIndex(was, index(toInt(positions[static_cast<std::size_t>(was.row())])));
  }
  Q_EMIT layoutChanged({}, VerticalSortHint);
}

}  // namespace dunmere
