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
#include "engine/inventory/counted_children.h"
#include "engine/listing/column_rows.h"
#include "engine/listing/listed_entries.h"
#include "engine/listing/row_order.h"
#include "engine/sweep_inventory.h"

namespace dunmere {

/// What a column keeps from one listing to the next. A folder that provably holds the same names is not read again,
/// what was counted is taken over from one snapshot of a scan to the next, and only rows whose size has changed are
/// sorted. Files that are not counted yet, and links, have to be looked at on the disk. One thread at a time; for one
/// and the same FileSystem.
class ColumnListing {
 public:
  /// How many entries a listing looks at on the disk.
  enum class Looks {
    all,   ///< every one, however long that takes
    some,  ///< while a scan goes on: so few that the scan is hardly slowed down, each in its turn
  };

  /// A scan that takes 1 µs a file is slowed down by a twentieth, if the disk answers as fast as memory. A slower disk
  /// bounds the looks by itself, since one is asked for after the other.
  static constexpr std::int64_t kLooksPerSecond = 50'000;
  /// So many are looked at in any case, so that most folders are complete at once.
  static constexpr std::int64_t kLeastLooks = 512;
  /// What has not been looked at by then waits for the next listing.
  static constexpr FileSystem::Instant kLongestLook = std::chrono::milliseconds(40);

  /// Where links lead, by the links' names.
  using LinkTargets = std::vector<std::pair<std::string, LinkTarget>>;
  /// Finds out where these links of the open folder lead: of those that it can tell now. A link that it leaves out has
  /// no target until a later call tells one, also for a link that was not asked for again.
  using LookAtLinks = std::function<LinkTargets(const std::shared_ptr<OpenFolder>&, const std::vector<std::string>&)>;

  /// Waits for each link in turn.
  static LinkTargets waitForLinks(const std::shared_ptr<OpenFolder>& folder, const std::vector<std::string>& names);

  /// Of the children of `parent`. `shown` are rows that somebody has of it already: what changes is told from there on.
  explicit ColumnListing(FileUrl parent, ColumnRows shown = {}) : parent_(std::move(parent)), rows_(std::move(shown)) {}

  /// The children, sized from `inventory`, largest first, equal sizes by name. The changes are those since the last
  /// call. Reads the disk for this one folder only. Fails with the error of opening or reading the folder, and when the
  /// column does not fit into memory; then there are no rows any more.
  std::expected<ColumnRows, SweepError> list(FileSystem& fileSystem, const SweepInventory& inventory,
                                             Looks looks = Looks::all, const LookAtLinks& lookAtLinks = waitForLinks);

  /// Whether the last call left entries out that were never asked for; their rows have the size 0.
  bool hasUnseen() const { return unseen_ > 0; }

 private:
  /// What the disk says of one entry.
  struct Seen {
    EntryKind kind = EntryKind::other;  ///< a link's target's
    std::int64_t bytes = 0;
    std::string key;  ///< of a link's target
  };

  std::expected<void, SweepError> update(FileSystem& fileSystem, const SweepInventory& inventory, Looks looks,
                                         const LookAtLinks& lookAtLinks);
  void beginEntries(const EntryNames& before);
  void updateCounted(const SweepInventory& inventory);
  bool needsLook(RowPosition position) const;
  std::vector<std::string> lookAtFiles(FileSystem& fileSystem, OpenFolder& folder, Looks looks);
  std::int64_t allowedLooks(FileSystem::Instant now) const;
  std::vector<RowPosition> takeTurns(std::size_t& visited, std::int64_t& allowed);
  void measure(OpenFolder& folder, const std::vector<RowPosition>& files);
  void keepTargets(const LinkTargets& targets);
  std::vector<RowPosition> updateRows(const SweepInventory& inventory);
  ColumnRow rowOf(RowPosition position) const;
  void sizeLinks(const SweepInventory& inventory, std::vector<ColumnRow>& rows) const;
  void publish(bool partialMark);

  FileUrl parent_;
  ColumnRows rows_;  // as the last call returned them
  ListedEntries entries_;
  std::optional<CountedChildren> children_;
  // By position:
  std::vector<std::optional<std::int64_t>> counted_;
  std::vector<ColumnRow> current_;
  std::unordered_map<RowPosition, Seen> seen_;
  RowOrder order_;
  RowPosition nextLook_ = 0;
  std::size_t unseen_ = 0;
  FileSystem::Instant lastLook_{0};
};

}  // namespace dunmere
