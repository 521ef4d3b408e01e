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

RowListModel::RowListModel(QObject* parent) : QAbstractListModel(parent) {}

void RowListModel::update(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow,
                          RowNumbers numbers) {
  const bool isTheSame = numbers.edition != 0 && numbers.edition == edition_ && numbers.revision == revision_;
  if (isTheSame && selectedRow == selectedRow_) return;
  const ListMatch match = matchNext(items, selectedRow, numbers);
  const std::optional<std::vector<ListChange>> steps = listChanges(match, kMostRowSteps);
  const bool rowsStay = steps && steps->empty();
  if (!rowsStay) {
    const int countBefore = count();
    const int pressedBefore = pressedRow();
    const int focusedBefore = focusedRow();
    emit aboutToUpdate();
    if (steps) {
      applySteps(*steps);
    } else {
      resort(match);
    }
    if (count() != countBefore) emit countChanged();
    if (pressedRow() != pressedBefore) emit pressedRowChanged();
    const bool focusedGone = focusedBefore >= 0 && focusedRow() < 0;
    if (focusedGone) focusedRow_ = index(std::min(focusedBefore, count() - 1));
    if (focusedGone || focusedRow() != focusedBefore) emit focusedRowChanged();
  }
  showNext();
  if (!rowsStay) emit updated();
}

/// Makes next_, and tells where its rows are now.
ListMatch RowListModel::matchNext(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow,
                                  RowNumbers numbers) {
  ListMatch match;
  if (numbers.edition != 0 && numbers.edition == edition_) {
    match = matchNumbers(numbers_, numbers.inOrder);
    next_ = ShownRows(shown_, match.oldIndex, items, selectedRow);
  } else {
    next_ = ShownRows(items, selectedRow);
    match = matchLists(shown_.names(), next_.names());
  }
  edition_ = numbers.edition;
  revision_ = numbers.revision;
  selectedRow_ = selectedRow;
  numbers_.assign(numbers.inOrder.begin(), numbers.inOrder.end());
  return match;
}

void RowListModel::setPressedRow(int row) {
  if (row == pressedRow()) return;
  pressedRow_ = QPersistentModelIndex(index(row));
  emit pressedRowChanged();
}

void RowListModel::setFocusedRow(int row) {
  if (row == focusedRow()) return;
  focusedRow_ = QPersistentModelIndex(index(row));
  emit focusedRowChanged();
}

int RowListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QVariant RowListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const ShownRow& row = rowAt(static_cast<std::size_t>(index.row()));
  switch (role) {
    case NameRole:
      return shownText(row.name);
    case SizeTextRole:
      return sizeText(row);
    case AccessibleTextRole:
      return accessibleText(row);
    case IsDirectoryRole:
      return row.isDirectory;
    case IsSymbolicLinkRole:
      return row.isSymbolicLink;
    case IsCompleteZeroRole:
      return row.sizeBytes == 0 && !row.sizeIsPartialMinimum;
    case SelectedRole:
      return row.selected;
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

QString RowListModel::sizeText(const ShownRow& row) {
  SweeperItem item;
  item.sizeBytes = row.sizeBytes;
  item.sizeIsPartialMinimum = row.sizeIsPartialMinimum;
  return QString::fromStdString(DiskSweeperPane::sizeLabel(item));
}

QString RowListModel::accessibleText(const ShownRow& row) {
  const QString kind = row.isSymbolicLink
                           ? (row.isDirectory ? QStringLiteral("link to a folder") : QStringLiteral("link"))
                           : (row.isDirectory ? QStringLiteral("folder") : QStringLiteral("file"));
  const QString least = row.sizeIsPartialMinimum ? QStringLiteral("at least ") : QString();
  const QString size = QString::fromStdString(byteCountText(row.sizeBytes));
  return shownText(row.name) + QStringLiteral(", ") + kind + QStringLiteral(", ") + least + size;
}

const ShownRow& RowListModel::rowAt(std::size_t position) const {
  const RowId id = order_[position];
  return (id & kOfNext) != 0 ? next_[id & ~kOfNext] : shown_[id];
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

// Four steps whatever changed: the rows that go are sorted to the end and removed there, the new ones are added there,
// and all are sorted into their order. A view keeps its place, for no row above it comes or goes.
void RowListModel::resort(const ListMatch& match) {
  std::vector<std::size_t> survivors;  // old positions, in the new order
  std::vector<bool> survives(match.oldCount, false);
  for (const std::size_t oldIndex : match.oldIndex) {
    if (oldIndex == kNew) continue;
    survivors.push_back(oldIndex);
    survives[oldIndex] = true;
  }
  const std::size_t kept = survivors.size();
  std::vector<std::size_t> order = std::move(survivors);
  for (std::size_t row = 0; row < match.oldCount; ++row) {
    if (!survives[row]) order.push_back(row);
  }
  reorder(order);
  removeRange(kept, match.oldCount - kept);

  std::vector<RowId> added;
  std::size_t nextKept = 0;
  order.clear();
  for (std::size_t row = 0; row < next_.size(); ++row) {
    if (match.oldIndex[row] != kNew) {
      order.push_back(nextKept++);
    } else {
      order.push_back(kept + added.size());
      added.push_back(kOfNext | static_cast<RowId>(row));
    }
  }
  insertRange(kept, added);
  reorder(order);
}

void RowListModel::removeRange(std::size_t first, std::size_t count) {
  if (count == 0) return;
  beginRemoveRows({}, toInt(first), toInt(first + count) - 1);
  const auto begin = order_.begin() + static_cast<std::ptrdiff_t>(first);
  order_.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
  endRemoveRows();
}

void RowListModel::insertRange(std::size_t first, const std::vector<RowId>& added) {
  if (added.empty()) return;
  beginInsertRows({}, toInt(first), toInt(first + added.size()) - 1);
  order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(first), added.begin(), added.end());
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

void RowListModel::reorder(const std::vector<std::size_t>& oldPositions) {
  emit layoutAboutToBeChanged({}, VerticalSortHint);
  std::vector<RowId> sorted;
  sorted.reserve(order_.size());
  std::vector<int> newPositions(order_.size());
  for (const std::size_t position : oldPositions) {
    newPositions[position] = toInt(sorted.size());
    sorted.push_back(order_[position]);
  }
  order_ = std::move(sorted);
  const QModelIndexList held = persistentIndexList();
  for (const QModelIndex& was : held) {
    changePersistentIndex(was, index(newPositions[static_cast<std::size_t>(was.row())]));
  }
  emit layoutChanged({}, VerticalSortHint);
}

// All rows stand where they belong: what is left is to tell which of them have new values.
void RowListModel::showNext() {
  std::vector<std::pair<int, int>> changed;  // first and last row of each run
  for (std::size_t row = 0; row < order_.size(); ++row) {
    if (rowAt(row).showsTheSameAs(next_[row])) continue;
    if (!changed.empty() && changed.back().second == toInt(row) - 1) {
      changed.back().second = toInt(row);
    } else {
      changed.emplace_back(toInt(row), toInt(row));
    }
  }
  shown_ = std::exchange(next_, {});
  std::iota(order_.begin(), order_.end(), RowId{0});
  // Very many runs are told as one: views look only at the rows on screen, but they look at every signal.
  if (changed.size() > kMostRowSteps) changed = {{changed.front().first, changed.back().second}};
  for (const auto& [first, last] : changed) emit dataChanged(index(first), index(last));
}

}  // namespace dunmere
