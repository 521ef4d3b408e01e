// RowFacts: what a column's row shows beside its name, and RowFactFinder, which finds it out.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "engine/file_system.h"
#include "engine/path_finder.h"
#include "engine/sweep_inventory.h"

namespace dunmere {

struct RowFacts {
  bool isDirectory = false;     ///< the entry, or a link's target, is a folder
  bool isSymbolicLink = false;  ///< the entry itself is one
  std::int64_t sizeBytes = 0;   ///< bytes

  friend bool operator==(const RowFacts&, const RowFacts&) = default;
};

/// Finds out the facts of a folder's entries. The arguments must outlive it. One thread.
class RowFactFinder {
 public:
  using Bytes = std::optional<std::int64_t>;

  RowFactFinder(const SweepInventory& inventory, OpenFolder& folder)
      : folder_(folder), linkTargets_(inventory.pathBytes) {}

  /// `bytes` are what the inventory counted for the entry's own key, else, of a file, what the disk says.
  RowFacts factsOf(std::string_view name, EntryKind kind, const Bytes& bytes);

 private:
  RowFacts linkFacts(std::string_view name, const Bytes& ofName);

  OpenFolder& folder_;
  PathFinder linkTargets_;
};

}  // namespace dunmere
