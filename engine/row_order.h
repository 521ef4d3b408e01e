// RowOrder: puts the rows of a column in order, larger sizes first and equal sizes by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "engine/file_system.h"
#include "engine/listed_entries.h"
#include "engine/name_keys.h"
#include "engine/row_facts.h"

namespace dunmere {

/// Names a row by its place in the folder.
using RowPosition = ListedEntries::Position;

/// Tells the rows of a column apart without comparing names: within one edition the same number is the same row, and
/// with the same revision all rows are what they were.
struct RowNumbers {
  std::uint64_t edition = 0;             ///< unique in the process; 0: no numbers
  std::uint64_t revision = 0;            ///< within the edition
  std::span<const RowPosition> inOrder;  ///< one for each row, from the first row down; each less than their number
};

/// Names of equal keys stay in the folder's order. One thread at a time; for one and the same FileSystem.
class RowOrder {
 public:
  /// All rows in order, as of the last update().
  const std::vector<RowPosition>& positions() const { return positions_; }

  /// From now on the column has these many other rows, none of which is in order yet.
  void begin(std::size_t rows);

  /// Puts the rows `changed`, in ascending positions, where they belong; all others stay in their order.
  void update(FileSystem& fileSystem, const ListedEntries& entries, const std::vector<RowFacts>& facts,
              std::vector<RowPosition> changed);

 private:
  class Sorter;

  std::vector<RowPosition> positions_;
  NameKeys keys_;
};

}  // namespace dunmere
