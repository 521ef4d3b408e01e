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

/// Finds out the facts of a folder's entries: by what the inventory counted, else, and only for files, by what the disk
/// says now. The arguments must outlive it. One thread.
class RowFactFinder {
 public:
  using Counted = std::optional<std::int64_t>;  ///< bytes that the inventory counted for an entry's own key

  RowFactFinder(const SweepInventory& inventory, OpenFolder& folder)
      : folder_(folder), linkTargets_(inventory.pathBytes) {}

  RowFacts factsOf(std::string_view name, EntryKind kind, const Counted& counted);

 private:
  std::int64_t bytesOnDisk(std::string_view name);
  RowFacts linkFacts(std::string_view name, const Counted& counted);

  OpenFolder& folder_;
  PathFinder linkTargets_;
};

}  // namespace dunmere
