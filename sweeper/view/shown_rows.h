// ShownRows: what a column shows of the rows of one listing, side by side in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/sweeper_item.h"

namespace dunmere {

struct ShownRow {
  std::string_view name;       ///< raw bytes
  std::int64_t sizeBytes = 0;  ///< bytes
  bool isDirectory = false;
  bool sizeIsPartialMinimum = false;
  bool isSymbolicLink = false;
  bool selected = false;

  friend bool operator==(const ShownRow&, const ShownRow&) = default;
};

/// Owns the bytes of all names in one block: a column of 100,000 rows is copied out of a listing by two allocations,
/// and compared with the next one without a jump through memory for every row.
class ShownRows {
 public:
  ShownRows() = default;
  /// `selectedRow` is an index into `items`.
  ShownRows(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow);
  ShownRows(ShownRows&&) = default;
  ShownRows& operator=(ShownRows&&) = default;

  std::size_t size() const { return rows_.size(); }
  const ShownRow& operator[](std::size_t row) const { return rows_[row]; }
  std::vector<std::string_view> names() const;

 private:
  std::vector<char> names_;  // of all rows, side by side; moving it leaves the bytes where they are
  std::vector<ShownRow> rows_;
};

}  // namespace dunmere
