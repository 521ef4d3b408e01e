// ColumnListing: lists one folder's children again and again, doing only what changed.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "engine/listing/column_rows.h"
#include "engine/listing/listed_entries.h"
#include "engine/listing/row_order.h"
#include "engine/sweep_inventory.h"

namespace dunmere {

/// What a column keeps from one listing to the next: a folder that provably holds the same names is not read again, and
/// only rows whose size has changed are sorted. Files that are not counted yet, and links, are looked at on the disk.
/// One thread at a time, always with the same FileSystem.
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

  /// Where links lead, by the links' names.
  using LinkTargets = std::vector<std::pair<std::string, LinkTarget>>;
  /// Finds out where these links of the open folder lead. May leave links out, which then have no target until a later
  /// call returns it, even one that was not asked for it.
  using LookAtLinks = std::function<LinkTargets(const std::shared_ptr<OpenFolder>&, const std::vector<std::string>&)>;

  /// Waits for each link in turn.
  static LinkTargets waitForLinks(const std::shared_ptr<OpenFolder>& folder, const std::vector<std::string>& names);

  /// Lists the children of `parent`. The first changes are those since the rows `shown`.
  explicit ColumnListing(FileUrl parent, const ColumnRows& shown = {}) : parent_(std::move(parent)), rows_(shown) {}

  /// The children, sized from `inventory`, largest first, equal sizes by name. The changes are those since the last
  /// call. Reads the disk for this one folder only. Fails with the error of opening or reading the folder, and when the
  /// column does not fit into memory; then there are no rows any more.
  std::expected<ColumnRows, SweepError> list(FileSystem& fileSystem, const SweepInventory& inventory,
                                             Looks looks = Looks::all, const LookAtLinks& lookAtLinks = waitForLinks);

  /// Whether there are uncounted files and links that no call has looked at yet; their rows have the size 0.
  bool hasUnseen() const { return unseen_ > 0; }

 private:
  /// What the disk says of a file or of a link's target.
  struct Seen {
    EntryKind kind = EntryKind::other;
    std::int64_t bytes = 0;
    std::string key;  ///< of a link's target; empty for a file
  };

  std::expected<void, SweepError> update(FileSystem& fileSystem, const SweepInventory& inventory, Looks looks,
                                         const LookAtLinks& lookAtLinks);
  void beginEntries(const EntryNames& before);
  void updateCounted(const PathBytes& pathBytes);
  bool needsLook(RowPosition position) const;
  std::vector<std::string> lookAtFiles(FileSystem& fileSystem, OpenFolder& folder, Looks looks);
  std::int64_t allowedLooks(FileSystem::Instant now) const;
  void measure(OpenFolder& folder, const std::vector<RowPosition>& files);
  void keepTargets(const LinkTargets& targets);
  std::vector<RowPosition> updateRows(const SweepInventory& inventory);
  ColumnRow rowOf(RowPosition position) const;
  void sizeLinks(const SweepInventory& inventory, std::vector<ColumnRow>& rows) const;
  void publish(bool partialMark);

  FileUrl parent_;
  ColumnRows rows_;  // as the last call returned them
  ListedEntries entries_;
  PathBytes pathBytes_;  // that counted_ is from
  // By position:
  std::vector<std::optional<std::int64_t>> counted_;
  std::vector<ColumnRow> current_;
  std::unordered_map<RowPosition, Seen> seen_;
  RowOrder order_;
  RowPosition nextLook_ = 0;
  std::size_t unseen_ = 0;
  std::optional<FileSystem::Instant> lastLook_;
};

}  // namespace dunmere
