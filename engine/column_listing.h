// ColumnListing: lists one folder's children again and again, doing only what changed.
#pragma once

#include <cstdint>
#include <expected>
#include <string_view>
#include <vector>

#include "engine/counted_children.h"
#include "engine/file_system.h"
#include "engine/file_url.h"
#include "engine/listed_entries.h"
#include "engine/look_rounds.h"
#include "engine/row_facts.h"
#include "engine/row_order.h"
#include "engine/sweep_inventory.h"
#include "engine/sweeper_item.h"

namespace dunmere {

/// What a column keeps from one listing to the next. The rows are those of a fresh listing every time; but a folder
/// that provably holds the same names is not read again, a row is made only once, what was counted is taken over from
/// one snapshot of a scan to the next, and only rows whose size has changed are sorted. Files that are not counted yet,
/// and links, have to be looked at on the disk: while a scan goes on each of them in its turn (LookRounds),
/// afterwards every time. One thread at a time; for one and the same FileSystem.
class ColumnListing {
 public:
  /// Makes `rows`, which must hold what the last call left there or nothing, the direct children of `parent`, sized
  /// from `inventory`, largest first, equal sizes by name. Reads the disk for this one folder only. Fails with the
  /// error of opening or reading the folder, and when the column does not fit into memory; then `rows` is empty.
  std::expected<void, SweepError> list(FileSystem& fileSystem, const FileUrl& parent, const SweepInventory& inventory,
                                       std::vector<SweeperItem>& rows);

  /// Of the rows that the last call left. Valid until the next one. Rows have other numbers than before when the folder
  /// has other entries.
  RowNumbers numbers() const { return {edition_, revision_, order_.positions()}; }

 private:
  using Rows = std::vector<SweeperItem>;

  std::expected<void, SweepError> listOpen(FileSystem& fileSystem, OpenFolder& folder, const FileUrl& parent,
                                           const SweepInventory& inventory, Rows& rows);
  void begin(const FileUrl& parent, Rows& rows);
  bool updateCounted(const SweepInventory& inventory);
  bool isUncountedFile(std::size_t position) const;
  bool mayKeepFacts(std::size_t position) const;
  std::vector<RowPosition> updateFacts(OpenFolder& folder, const SweepInventory& inventory, bool isFirst);
  void make(Rows& rows) const;
  void arrange(const std::vector<RowPosition>& before, Rows& rows) const;
  void showFacts(Rows& rows) const;

  FileUrl parent_;
  std::uint64_t edition_ = 0;
  std::uint64_t revision_ = 0;
  ListedEntries entries_;
  CountedChildren children_;
  std::vector<RowFactFinder::Bytes> counted_;  // by position, as are the facts
  std::vector<RowFacts> facts_;
  LookRounds rounds_;
  RowOrder order_;
  bool partialMark_ = false;  // one for all folders of the column
};

}  // namespace dunmere
