#include <utility>

#include "engine/column_listing.h"
#include "engine/disk_sweeper_scan.h"

namespace dunmere {

std::expected<std::vector<SweeperItem>, SweepError> DiskSweeperScan::columnChildren(FileSystem& fileSystem,
                                                                                    const FileUrl& parent,
                                                                                    const SweepInventory& inventory) {
  std::vector<SweeperItem> rows;
  if (auto result = ColumnListing().list(fileSystem, parent, inventory, rows); !result)
    return std::unexpected(std::move(result.error()));
  return rows;
}

}  // namespace dunmere
