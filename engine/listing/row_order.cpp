#include "engine/listing/row_order.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

#include "engine/listing/key_order.h"

namespace dunmere {

/// Compares rows by what is known of them now.
class RowOrder::Sorter {
 public:
  using RowIterator = std::vector<RowPosition>::iterator;

  Sorter(FileSystem& fileSystem, const ListedEntries& entries, const std::vector<ColumnRow>& rows, NameKeys& keys)
      : fileSystem_(fileSystem), entries_(entries), rows_(rows), keys_(keys) {}

  /// `rows` in ascending positions.
  void sort(std::vector<RowPosition>& rows) {
    const auto sizeOfRow = [this](RowPosition row) { return sizeOf(row); };
    // Rows of one size, as those of a new column often are, need not be sorted by it.
    if (!std::ranges::is_sorted(rows, std::greater(), sizeOfRow)) {
      std::ranges::stable_sort(rows, std::greater(), sizeOfRow);
    }
    // Only rows of one size need keys, which cost more than all the rest of a row.
    std::vector<RowPosition> tied;
    forEachTie(rows, [&tied](RowIterator begin, RowIterator end) { tied.insert(tied.end(), begin, end); });
    keys_.make(fileSystem_, entries_, tied);
    forEachTie(rows, [this](RowIterator begin, RowIterator end) { sortByName(begin, end); });
  }

  /// The first of the ordered rows that `row` stands before. Looks near `first` first, so that finding the places of
  /// ordered rows one after another costs no more than going through all, and much less where they are few.
  RowIterator placeOf(RowPosition row, RowIterator first, RowIterator last) {
    const auto isBeforeRow = [&](RowPosition other, RowPosition) { return isBefore(other, row); };
    for (std::ptrdiff_t step = 1; step <= last - first; step *= 2) {
      if (!isBefore(first[step - 1], row)) return std::lower_bound(first, first + step, row, isBeforeRow);
      first += step;
    }
    return std::lower_bound(first, last, row, isBeforeRow);
  }

 private:
  bool isBefore(RowPosition a, RowPosition b) {
    if (sizeOf(a) != sizeOf(b)) return sizeOf(a) > sizeOf(b);
    const int order = keyOf(a).compare(keyOf(b));
    return order != 0 ? order < 0 : a < b;
  }

  std::int64_t sizeOf(RowPosition row) const { return rows_[row].sizeBytes; }
  std::string_view keyOf(RowPosition row) { return keys_.key(fileSystem_, row, entries_.name(row)); }

  /// Calls `act` for each run of several rows of one size.
  void forEachTie(std::vector<RowPosition>& rows, const std::function<void(RowIterator, RowIterator)>& act) const {
    for (auto run = rows.begin(); run != rows.end();) {
      const auto end = std::find_if(run, rows.end(), [&](RowPosition row) { return sizeOf(row) != sizeOf(*run); });
      if (end - run > 1) act(run, end);
      run = end;
    }
  }

  void sortByName(RowIterator begin, RowIterator end) {
    const std::vector<RowPosition> unsorted(begin, end);
    KeyOrder order;
    order.reserve(unsorted.size());
    for (const RowPosition row : unsorted) order.add(keyOf(row));
    std::ranges::transform(order.sorted(), begin, [&unsorted](std::size_t index) { return unsorted[index]; });
  }

  FileSystem& fileSystem_;
  const ListedEntries& entries_;
  const std::vector<ColumnRow>& rows_;
  NameKeys& keys_;
};

void RowOrder::begin(std::size_t rows) {
  positions_.clear();
  keys_.begin(rows);
}

void RowOrder::update(FileSystem& fileSystem, const ListedEntries& entries, const std::vector<ColumnRow>& rows,
                      std::vector<RowPosition> changed) {
  Sorter sorter(fileSystem, entries, rows, keys_);
  std::vector<bool> isChanged(rows.size(), false);
  for (const RowPosition row : changed) isChanged[row] = true;
  sorter.sort(changed);
  std::vector<RowPosition> kept;
  kept.reserve(positions_.size());
  std::ranges::copy_if(positions_, std::back_inserter(kept), [&](RowPosition row) { return !isChanged[row]; });
  std::vector<RowPosition> merged;
  merged.reserve(rows.size());
  auto next = kept.begin();
  for (const RowPosition row : changed) {
    const auto place = sorter.placeOf(row, next, kept.end());
    merged.insert(merged.end(), next, place);
    merged.push_back(row);
    next = place;
  }
  merged.insert(merged.end(), next, kept.end());
  positions_ = std::move(merged);
}

}  // namespace dunmere
