// ShownRows: what a column shows of the rows of one listing, side by side in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
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

  /// `item` is a row of the same name.
  void show(const SweeperItem& item, bool isSelected);
  bool showsTheSameAs(const ShownRow& other) const;  ///< which has the same name
};

/// Owns the bytes of all names in one block, which is copied out of a listing once and shared by all that follow with
/// the same names, and which is read without a jump through memory for every row.
class ShownRows {
 public:
  ShownRows() = default;
  /// `selectedRow` is an index into `items`.
  ShownRows(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow);
  /// Rows of the same names as those of `before`; `oldIndex` tells where each of them was.
  ShownRows(const ShownRows& before, const std::vector<std::size_t>& oldIndex, const std::vector<SweeperItem>& items,
            std::optional<std::size_t> selectedRow);
  ShownRows(ShownRows&&) = default;
  ShownRows& operator=(ShownRows&&) = default;

  std::size_t size() const { return rows_.size(); }
  const ShownRow& operator[](std::size_t row) const { return rows_[row]; }
  std::vector<std::string_view> names() const;

 private:
  std::shared_ptr<const std::vector<char>> names_;  // of all rows, side by side
  std::vector<ShownRow> rows_;
};

}  // namespace dunmere
