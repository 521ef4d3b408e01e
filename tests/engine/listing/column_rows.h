// ColumnRows: lists a column of a tree in memory and looks its rows up by name.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {

inline std::vector<SweeperItem> columnOf(MemoryFileSystem& fileSystem, const std::string& parent,
                                         const SweepInventory& inventory) {
  return DiskSweeperScan::columnChildren(fileSystem, FileUrl(parent), inventory).value();
}

inline std::vector<std::string> namesOf(const std::vector<SweeperItem>& rows) {
  std::vector<std::string> names;
  for (const SweeperItem& row : rows) names.push_back(row.name);
  return names;
}

/// The row called `name`; throws when there is none.
inline SweeperItem rowOf(const std::vector<SweeperItem>& rows, std::string_view name) {
  const auto found = std::ranges::find(rows, name, &SweeperItem::name);
  if (found == rows.end()) throw std::out_of_range("no row " + std::string(name));
  return *found;
}

}  // namespace dunmere::test
