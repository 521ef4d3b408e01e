#include "sweeper/view/row_list_model.h"

#include <algorithm>
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

bool RowListModel::Row::hasValuesOf(const SweeperItem& item, bool isSelected) const {
  return sizeBytes == item.sizeBytes && isDirectory == item.isDirectory &&
         sizeIsPartialMinimum == item.sizeIsPartialMinimum && isSymbolicLink == item.isSymbolicLink &&
         selected == isSelected;
}

RowListModel::RowListModel(QObject* parent) : QAbstractListModel(parent) {}

void RowListModel::update(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow) {
  const ListMatch match = matchWith(items);
  const std::optional<std::vector<ListChange>> steps = listChanges(match, kMostRowSteps);
  const bool rowsStay = steps && steps->empty();
  if (!rowsStay) {
    const int countBefore = count();
    const int pressedBefore = pressedRow();
    const int focusedBefore = focusedRow();
    emit aboutToUpdate();
    if (steps) {
      applySteps(*steps, items);
    } else {
      resort(match, items);
    }
    if (count() != countBefore) emit countChanged();
    if (pressedRow() != pressedBefore) emit pressedRowChanged();
    if (focusedRow() != focusedBefore) emit focusedRowChanged();
  }
  updateValues(items, selectedRow);
  if (!rowsStay) emit updated();
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
  const Row& row = *rows_[static_cast<std::size_t>(index.row())];
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

RowListModel::Row RowListModel::rowOf(const SweeperItem& item, bool selected) {
  return {item.name, item.sizeBytes, item.isDirectory, item.sizeIsPartialMinimum, item.isSymbolicLink, selected};
}

QString RowListModel::sizeText(const Row& row) {
  SweeperItem item;
  item.sizeBytes = row.sizeBytes;
  item.sizeIsPartialMinimum = row.sizeIsPartialMinimum;
  return QString::fromStdString(DiskSweeperPane::sizeLabel(item));
}

QString RowListModel::accessibleText(const Row& row) {
  const QString kind = row.isSymbolicLink
                           ? (row.isDirectory ? QStringLiteral("link to a folder") : QStringLiteral("link"))
                           : (row.isDirectory ? QStringLiteral("folder") : QStringLiteral("file"));
  const QString least = row.sizeIsPartialMinimum ? QStringLiteral("at least ") : QString();
  const QString size = QString::fromStdString(byteCountText(row.sizeBytes));
  return shownText(row.name) + QStringLiteral(", ") + kind + QStringLiteral(", ") + least + size;
}

RowListModel::Rows RowListModel::makeRows(const std::vector<SweeperItem>& items, std::size_t first, std::size_t count) {
  Rows made;
  made.reserve(count);
  for (std::size_t row = first; row < first + count; ++row)
    made.push_back(std::make_unique<Row>(rowOf(items[row], false)));
  return made;
}

ListMatch RowListModel::matchWith(const std::vector<SweeperItem>& items) const {
  std::vector<std::string_view> oldNames;
  oldNames.reserve(rows_.size());
  for (const std::unique_ptr<Row>& row : rows_) oldNames.emplace_back(row->name);
  std::vector<std::string_view> newNames;
  newNames.reserve(items.size());
  for (const SweeperItem& item : items) newNames.emplace_back(item.name);
  return matchLists(oldNames, newNames);
}

void RowListModel::applySteps(const std::vector<ListChange>& steps, const std::vector<SweeperItem>& items) {
  for (const ListChange& step : steps) {
    switch (step.kind) {
      case ListChange::Kind::remove:
        removeRange(step.position, step.count);
        break;
      case ListChange::Kind::move:
        moveRow(step.position, step.target);
        break;
      case ListChange::Kind::insert:
        insertRange(step.position, makeRows(items, step.target, step.count));
        break;
    }
  }
}

// Four steps whatever changed: the rows that go are sorted to the end and removed there, the new ones are added there,
// and all are sorted into their order. A view keeps its place, for no row above it comes or goes.
void RowListModel::resort(const ListMatch& match, const std::vector<SweeperItem>& items) {
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

  Rows added;
  std::size_t nextKept = 0;
  order.clear();
  for (std::size_t row = 0; row < items.size(); ++row) {
    if (match.oldIndex[row] != kNew) {
      order.push_back(nextKept++);
    } else {
      order.push_back(kept + added.size());
      added.push_back(std::make_unique<Row>(rowOf(items[row], false)));
    }
  }
  insertRange(kept, std::move(added));
  reorder(order);
}

void RowListModel::removeRange(std::size_t first, std::size_t count) {
  if (count == 0) return;
  beginRemoveRows({}, toInt(first), toInt(first + count) - 1);
  const auto begin = rows_.begin() + static_cast<std::ptrdiff_t>(first);
  rows_.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
  endRemoveRows();
}

void RowListModel::insertRange(std::size_t first, Rows added) {
  if (added.empty()) return;
  beginInsertRows({}, toInt(first), toInt(first + added.size()) - 1);
  rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(first), std::make_move_iterator(added.begin()),
               std::make_move_iterator(added.end()));
  endInsertRows();
}

void RowListModel::moveRow(std::size_t from, std::size_t to) {
  // Qt names the row that the moved one is put before.
  const std::size_t before = to > from ? to + 1 : to;
  beginMoveRows({}, toInt(from), toInt(from), {}, toInt(before));
  const auto begin = rows_.begin();
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
  Rows sorted;
  sorted.reserve(rows_.size());
  std::vector<int> newPositions(rows_.size());
  for (const std::size_t position : oldPositions) {
    newPositions[position] = toInt(sorted.size());
    sorted.push_back(std::move(rows_[position]));
  }
  rows_ = std::move(sorted);
  const QModelIndexList held = persistentIndexList();
  for (const QModelIndex& was : held) {
    changePersistentIndex(was, index(newPositions[static_cast<std::size_t>(was.row())]));
  }
  emit layoutChanged({}, VerticalSortHint);
}

void RowListModel::updateValues(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow) {
  std::vector<std::pair<int, int>> changed;  // first and last row of each run
  for (std::size_t row = 0; row < items.size(); ++row) {
    Row& shown = *rows_[row];
    if (shown.hasValuesOf(items[row], selectedRow == row)) continue;
    shown = rowOf(items[row], selectedRow == row);
    if (!changed.empty() && changed.back().second == toInt(row) - 1) {
      changed.back().second = toInt(row);
    } else {
      changed.emplace_back(toInt(row), toInt(row));
    }
  }
  // Very many runs are told as one: views look only at the rows on screen, but they look at every signal.
  if (changed.size() > kMostRowSteps) changed = {{changed.front().first, changed.back().second}};
  for (const auto& [first, last] : changed) emit dataChanged(index(first), index(last));
}

}  // namespace dunmere
