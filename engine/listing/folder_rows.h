// FolderRows: the rows of one folder, made from what is known of it, without asking its disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
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

/// Remembers what the disk said of the folder, and redoes only what changed since the rows before. One thread at a
/// time, always with the same FileSystem.
class FolderRows {
 public:
  /// Where links lead, by the links' names.
  using LinkTargets = std::vector<std::pair<std::string, LinkTarget>>;

  /// Nothing is known of `folder` yet. The first changes are those since the rows `shown`.
  FolderRows(FileUrl folder, const ColumnRows& shown);

  // What the disk says:
  /// The folder could not be read: forgets all and has no rows until the next setEntries().
  void fail(SweepError error);
  /// What is known of an entry stays known if it is among these too. Returns whether they differ from those before.
  bool setEntries(ListedEntries entries);
  /// The folder has been read.
  const ListedEntries& entries() const { return *entries_; }
  /// The size of a file that was not counted.
  void setFileBytes(RowPosition position, std::int64_t bytes);
  /// The links' targets; a link that needs a look and is none of these has no target.
  void setTargets(const LinkTargets& targets);
  void setLinkAskedFor(RowPosition position);

  /// Takes what was counted from `pathBytes`.
  void count(const PathBytes& pathBytes);
  /// Whether the disk must be asked for the size of this row: a link, or a file that was not counted.
  bool needsLook(RowPosition position) const;
  /// Whether the disk was not asked yet for some of these, as of the last rows(); their rows have the size 0.
  bool hasUnseen() const { return unseen_ > 0; }

  /// The children, sized from `inventory`, largest first, equal sizes by name. The changes are those since the last
  /// call. Fails with the error of fail(), with EAGAIN before the folder was read, and when memory does not suffice;
  /// changes are then told since no rows.
  std::expected<ColumnRows, SweepError> rows(FileSystem& fileSystem, const SweepInventory& inventory);

 private:
  /// What the disk says of a file or of a link's target.
  struct Seen {
    EntryKind kind = EntryKind::other;
    std::int64_t bytes = 0;
    std::string key;  ///< of a link's target; empty for a file
  };

  std::vector<RowPosition> updateRows(const SweepInventory& inventory);
  ColumnRow rowOf(RowPosition position) const;
  void sizeLinks(const SweepInventory& inventory, std::vector<ColumnRow>& rows) const;
  void publish(bool partialMark);

  FileUrl folder_;
  ColumnRows shown_;  // as the last call of rows() returned them
  std::expected<ListedEntries, SweepError> entries_;
  std::optional<PathBytes> pathBytes_;  // that counted_ is from
  // By position:
  std::vector<std::optional<std::int64_t>> counted_;
  std::vector<ColumnRow> current_;  // empty: all rows are new to order_
  std::unordered_map<RowPosition, Seen> seen_;
  RowOrder order_;
  std::size_t unseen_ = 0;
  std::optional<SweepError> noMemory_;  // made while there still is some
};

}  // namespace dunmere
