// RowOrder: puts the rows of a column in order, larger sizes first and equal sizes by name.
#pragma once

#include <cstddef>
#include <vector>

#include "engine/file_system.h"
#include "engine/listing/column_rows.h"
#include "engine/listing/listed_entries.h"
#include "engine/listing/name_keys.h"

namespace dunmere {

/// Names of equal keys stay in the folder's order. One thread at a time; for one and the same FileSystem.
class RowOrder {
 public:
  /// All rows in order, as of the last update().
  const std::vector<RowPosition>& positions() const { return positions_; }

  /// From now on the column has these many other rows, none of which is in order yet.
  void begin(std::size_t rows);

  /// Puts the rows `changed`, in ascending positions, where they belong; all others stay in their order. `rows` stand
  /// by position.
  void update(FileSystem& fileSystem, const ListedEntries& entries, const std::vector<ColumnRow>& rows,
              std::vector<RowPosition> changed);

 private:
  class Sorter;

  std::vector<RowPosition> positions_;
  NameKeys keys_;
};

}  // namespace dunmere
