// RowOrder: puts the rows of a column in order, larger sizes first and equal sizes by name.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <span>
#include <string_view>
#include <vector>

#include "engine/file_system.h"
#include "engine/listing/column_rows.h"

namespace dunmere {

/// Positions of the keys, counted from 0, in ascending order of the keys' bytes; equal keys stay in their order.
std::vector<std::size_t> orderOfKeys(std::span<const std::string_view> keys);

/// Names of equal sort keys stay in the folder's order. A sort key costs more than all the rest of a row: it is made
/// once, and only for rows that share their size with others. One thread at a time, always with the same FileSystem.
class RowOrder {
 public:
  /// All rows in order, as of the last update().
  const std::vector<RowPosition>& positions() const { return positions_; }

  /// Starts over with `rows` unordered rows.
  void begin(std::size_t rows);

  /// Puts the rows `changed`, in ascending positions, where they belong; all others stay in their order. `names` and
  /// `rows` are indexed by position.
  void update(FileSystem& fileSystem, const EntryNames& names, const std::vector<ColumnRow>& rows,
              std::vector<RowPosition> changed);

 private:
  class Sorter;

  std::vector<RowPosition> positions_;
  std::vector<std::string_view> keys_;  // by position; without data: not made yet
  std::unique_ptr<std::pmr::monotonic_buffer_resource> keyBytes_;
};

}  // namespace dunmere
