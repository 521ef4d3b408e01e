#include <new>
#include <system_error>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "engine/listing/column_listing.h"

namespace dunmere {

std::expected<std::vector<SweeperItem>, SweepError> DiskSweeperScan::columnChildren(FileSystem& fileSystem,
                                                                                    const FileUrl& parent,
                                                                                    const SweepInventory& inventory) {
  // Made while there still is memory.
  SweepError error{SweepAttempt::openFolder, parent, std::make_error_code(std::errc::not_enough_memory), {}};
  try {
    auto rows = ColumnListing(parent).list(fileSystem, inventory);
    if (rows) return rows->items();
    error = std::move(rows.error());
  } catch (const std::bad_alloc&) {
  }
  return std::unexpected(std::move(error));
}

}  // namespace dunmere
