// ColumnListing: lists one folder's children again and again, doing only what changed.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "engine/listing/column_rows.h"
#include "engine/listing/folder_rows.h"
#include "engine/sweep_inventory.h"
#include "engine/thread_annotations.h"

namespace dunmere {

/// What a column keeps from one listing to the next: a folder that provably holds the same names is not read again, and
/// only rows whose size has changed are sorted. Files that are not counted yet, and links, are looked at on the disk.
/// Always with the same FileSystem.
class ColumnListing {
 public:
  /// How many entries a listing looks at on the disk.
  enum class Looks {
    all,   ///< every one, however long that takes
    some,  ///< while a scan goes on: so few that the scan is hardly slowed down, the next ones each time
  };

  /// With Looks::some. Slows a scan of 1 µs a file down by a twentieth if the disk answers as fast as memory; a slower
  /// disk is asked less often anyway.
  static constexpr std::int64_t kLooksPerSecond = 50'000;
  /// With Looks::some, at least so many, and only so many by the first listing, which somebody waits for.
  static constexpr std::int64_t kLeastLooks = 2'000;
  /// With Looks::some. What has not been looked at by then waits for the next listing.
  static constexpr FileSystem::Instant kLongestLook = std::chrono::milliseconds(40);

  using LinkTargets = FolderRows::LinkTargets;
  /// Finds out where these links of the open folder lead. May leave links out, which then have no target until a later
  /// call returns it, even one that was not asked for it.
  using LookAtLinks = std::function<LinkTargets(const std::shared_ptr<OpenFolder>&, const std::vector<std::string>&)>;

  /// Waits for each link in turn.
  static LinkTargets waitForLinks(const std::shared_ptr<OpenFolder>& folder, const std::vector<std::string>& names);

  /// Lists the children of `parent`. The first changes are those since the rows `shown`.
  explicit ColumnListing(const FileUrl& parent, const ColumnRows& shown = {}) : parent_(parent), rows_(parent, shown) {}

  /// read(), then rows().
  std::expected<ColumnRows, SweepError> list(FileSystem& fileSystem, const SweepInventory& inventory,
                                             Looks looks = Looks::all, const LookAtLinks& lookAtLinks = waitForLinks);

  /// Reads the disk for this one folder: its entries, and the sizes that `inventory` does not have. May take as long as
  /// the disk. What fails is told by rows(). One thread at a time.
  void read(FileSystem& fileSystem, const SweepInventory& inventory, Looks looks, const LookAtLinks& lookAtLinks);

  /// The children as the disk had them, sized from `inventory`, largest first, equal sizes by name. The changes are
  /// those since the last call. Waits for no disk; any thread, also during read(). Fails with the error of opening or
  /// reading the folder, with EAGAIN before it was read, and when the column does not fit into memory; the next rows
  /// then follow no others. Throws std::bad_alloc when memory does not even suffice for that error.
  std::expected<ColumnRows, SweepError> rows(FileSystem& fileSystem, const SweepInventory& inventory);

  /// Whether there are uncounted files and links that no read() has looked at yet; their rows have the size 0.
  bool hasUnseen();

 private:
  /// Rows to look at on the disk.
  struct Wanted {
    std::shared_ptr<const EntryNames> names;
    std::vector<RowPosition> files;
    std::vector<std::string> links;
  };

  std::expected<void, SweepError> readEntries(OpenFolder& folder);
  Wanted chooseLooks(const SweepInventory& inventory, std::int64_t allowed);
  void measure(FileSystem& fileSystem, OpenFolder& folder, const Wanted& wanted, Looks looks);
  std::int64_t allowedLooks(FileSystem::Instant now) const;

  const FileUrl parent_;
  // Only read() uses these:
  std::optional<FolderStamp> stamp_;  // from before the entries were read
  RowPosition nextLook_ = 0;
  std::optional<FileSystem::Instant> lastLook_;

  Mutex mutex_;  // never held while the disk is asked
  FolderRows rows_ GUARDED_BY(mutex_);
};

}  // namespace dunmere
