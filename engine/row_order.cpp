#include "engine/row_order.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

#include "engine/key_order.h"

namespace dunmere {

/// Compares rows by what is known of them now.
class RowOrder::Sorter {
 public:
  Sorter(FileSystem& fileSystem, const ListedEntries& entries, const std::vector<RowFacts>& facts, NameKeys& keys)
      : fileSystem_(fileSystem), entries_(entries), facts_(facts), keys_(keys) {}

  /// `rows` in ascending positions.
  void sort(std::vector<RowPosition>& rows) {
    const auto sizeOfRow = [this](RowPosition row) { return sizeOf(row); };
    std::ranges::stable_sort(rows, std::greater(), sizeOfRow);
    for (auto run = rows.begin(); run != rows.end();) {
      const auto end = std::find_if(run, rows.end(), [&](RowPosition row) { return sizeOf(row) != sizeOf(*run); });
      if (end - run > 1) sortByName(run, end);
      run = end;
    }
  }

  bool isBefore(RowPosition a, RowPosition b) {
    if (sizeOf(a) != sizeOf(b)) return sizeOf(a) > sizeOf(b);
    makeKey(a);  // so that making the second one cannot move the first
    makeKey(b);
    const int order = keyOf(a).compare(keyOf(b));
    return order != 0 ? order < 0 : a < b;
  }

 private:
  using RowIterator = std::vector<RowPosition>::iterator;

  std::int64_t sizeOf(RowPosition row) const { return facts_[row].sizeBytes; }
  std::string_view keyOf(RowPosition row) { return keys_.key(fileSystem_, row, entries_.name(row)); }
  void makeKey(RowPosition row) { keyOf(row); }

  /// Sorts rows of one size. Only they need keys, which cost more than all the rest of a row.
  void sortByName(RowIterator begin, RowIterator end) {
    const std::vector<RowPosition> unsorted(begin, end);
    KeyOrder order;
    order.reserve(unsorted.size());
    for (const RowPosition row : unsorted) order.add(keyOf(row));
    std::ranges::transform(order.sorted(), begin, [&unsorted](std::size_t index) { return unsorted[index]; });
  }

  FileSystem& fileSystem_;
  const ListedEntries& entries_;
  const std::vector<RowFacts>& facts_;
  NameKeys& keys_;
};

void RowOrder::begin(std::size_t rows) {
  positions_.clear();
  keys_.begin(rows);
}

void RowOrder::update(FileSystem& fileSystem, const ListedEntries& entries, const std::vector<RowFacts>& facts,
                      std::vector<RowPosition> changed) {
  Sorter sorter(fileSystem, entries, facts, keys_);
  std::vector<bool> isChanged(facts.size(), false);
  for (const RowPosition row : changed) isChanged[row] = true;
  sorter.sort(changed);
  std::vector<RowPosition> kept;
  kept.reserve(positions_.size());
  std::ranges::copy_if(positions_, std::back_inserter(kept), [&](RowPosition row) { return !isChanged[row]; });
  std::vector<RowPosition> merged;
  merged.reserve(facts.size());
  std::ranges::merge(kept, changed, std::back_inserter(merged),
                     [&sorter](RowPosition a, RowPosition b) { return sorter.isBefore(a, b); });
  positions_ = std::move(merged);
}

}  // namespace dunmere
