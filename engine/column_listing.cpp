#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/column_memory.h"
#include "engine/disk_sweeper_scan.h"
#include "engine/key_order.h"
#include "engine/path_finder.h"

namespace dunmere {

namespace {

/// What a row shows beside its name.
struct RowFacts {
  bool isDirectory = false;
  bool isSymbolicLink = false;
  std::int64_t sizeBytes = 0;
};

/// One listing on its way from the folder to the sorted column:
///   1. the folder's names and kinds are read in batches, and each entry becomes a small row;
///   2. the rows are sorted by size, and where sizes tie by name;
///   3. the rows, now in their final order, become items.
class ColumnListing {
 public:
  ColumnListing(FileSystem& fileSystem, const FileUrl& parent, const SweepInventory& inventory, OpenFolder& folder,
                ColumnMemory& memory)
      : fileSystem_(fileSystem),
        parent_(parent),
        inventory_(inventory),
        linkTargets_(inventory.pathBytes),
        counted_(inventory.pathBytes.folder(parent.key())),
        holdsRoot_(inventory.rootPath != "/" &&
                   FileUrl(inventory.rootPath).deletingLastPathComponent().key() == parent.key()),
        partialMark_(!inventory.scanComplete || inventory.hadReadErrors),
        folder_(folder),
        memory_(memory) {}

  std::expected<void, SweepError> read() {
    EntryBatch batch;
    do {
      if (const auto result = folder_.readEntries(batch); !result) return std::unexpected(result.error());
      for (const EntryBatch::Entry& entry : batch.entries()) addRow(batch.name(entry), entry.attributes.kind);
    } while (!batch.empty());
    memory_.begin(names_, rows_.size());
    return {};
  }

  void sort() {
    std::ranges::stable_sort(rows_, std::greater(), sizeOf);
    for (auto run = rows_.begin(); run != rows_.end();) {
      const auto end = std::find_if(run, rows_.end(), [run](const Row& row) { return sizeOf(row) != sizeOf(*run); });
      if (end - run > 1) sortByName(run, end);
      run = end;
    }
  }

  std::vector<SweeperItem> items() const {
    std::vector<SweeperItem> items;
    items.reserve(rows_.size());
    for (const Row& row : rows_) items.push_back(itemOf(row));
    return items;
  }

 private:
  /// Small enough to be moved about while sorting; the names stay where they are.
  struct Row {
    std::size_t nameOffset = 0;
    std::uint32_t nameLength = 0;
    std::uint32_t position = 0;  // in the folder
    RowFacts facts;
  };
  using RowIterator = std::vector<Row>::iterator;

  static std::int64_t sizeOf(const Row& row) { return row.facts.sizeBytes; }

  void addRow(std::string_view name, EntryKind kind) {
    rows_.push_back({names_.size(), static_cast<std::uint32_t>(name.size()), static_cast<std::uint32_t>(rows_.size()),
                     factsOf(name, kind)});
    names_.append(name).push_back('/');
  }

  RowFacts factsOf(std::string_view name, EntryKind kind) {
    switch (kind) {
      case EntryKind::symbolicLink:
        return linkFacts(name);
      case EntryKind::folder:
        return {true, false, countedBytes(name).value_or(0)};
      case EntryKind::regularFile:
        return {false, false, fileBytes(name)};
      case EntryKind::other:
        return {};
    }
    std::unreachable();
  }

  std::int64_t fileBytes(std::string_view name) {
    if (const auto counted = countedBytes(name)) return *counted;
    // Asked only here: the scan's own answer spares a column of counted files every look at the disk.
    const auto attributes = folder_.attributes(name);
    return attributes && attributes->kind == EntryKind::regularFile ? attributes->countedBytes() : 0;
  }

  RowFacts linkFacts(std::string_view name) {
    const LinkTarget target = folder_.resolveLink(name);
    RowFacts facts{false, true, 0};
    if (!target.attributes) return facts;
    switch (target.attributes->kind) {
      case EntryKind::folder:
        facts.isDirectory = true;
        facts.sizeBytes = countedThroughLink(target, name).value_or(0);
        break;
      case EntryKind::regularFile:
        facts.sizeBytes = countedThroughLink(target, name).value_or(target.attributes->countedBytes());
        break;
      case EntryKind::symbolicLink:
      case EntryKind::other:
        break;
    }
    return facts;
  }

  /// The target's own entry or, should the link's name have been a file or folder when it was scanned, the name's.
  std::optional<std::int64_t> countedThroughLink(const LinkTarget& target, std::string_view name) {
    const auto ofTarget = linkTargets_.find(target.url.key());
    return ofTarget ? ofTarget : countedBytes(name);
  }

  /// What the scan counted under the row's own key.
  std::optional<std::int64_t> countedBytes(std::string_view name) {
    // The folder above the scan root holds one counted row, which is no child in the inventory: the root itself.
    if (holdsRoot_ && parent_.appending(name).key() == inventory_.rootPath) {
      return inventory_.pathBytes.find(inventory_.rootPath);
    }
    return counted_.bytesOf(name);
  }

  /// Sorts rows of one size. Only they need keys, which cost more than all the rest of a row.
  void sortByName(RowIterator begin, RowIterator end) {
    const std::vector<Row> unsorted(begin, end);
    KeyOrder order;
    order.reserve(unsorted.size());
    for (const Row& row : unsorted) order.add(memory_.key(fileSystem_, row.position, nameOf(row)));
    std::ranges::transform(order.sorted(), begin, [&unsorted](std::size_t position) { return unsorted[position]; });
  }

  std::string_view nameOf(const Row& row) const {
    return std::string_view(names_).substr(row.nameOffset, row.nameLength);
  }

  SweeperItem itemOf(const Row& row) const {
    const std::string_view name = nameOf(row);
    const RowFacts& facts = row.facts;
    return {parent_.appending(name),           std::string(name),   facts.isDirectory, facts.sizeBytes,
            facts.isDirectory && partialMark_, facts.isSymbolicLink};
  }

  FileSystem& fileSystem_;
  const FileUrl& parent_;
  const SweepInventory& inventory_;
  PathFinder linkTargets_;
  PathBytes::Folder counted_;
  const bool holdsRoot_;
  const bool partialMark_;  // one for the whole column
  OpenFolder& folder_;
  ColumnMemory& memory_;
  std::string names_;  // of all rows, in the folder's order, each ended by a slash
  std::vector<Row> rows_;
};

}  // namespace

std::expected<std::vector<SweeperItem>, SweepError> DiskSweeperScan::columnChildren(FileSystem& fileSystem,
                                                                                    const FileUrl& parent,
                                                                                    const SweepInventory& inventory,
                                                                                    ColumnMemory* memory) {
  // Made while there still is some.
  SweepError outOfMemory{SweepAttempt::openFolder, parent, std::make_error_code(std::errc::not_enough_memory), {}};
  try {
    const auto folder = fileSystem.openFolder(parent, EntryDetail::kinds);
    if (!folder) return std::unexpected(folder.error());
    ColumnMemory forgotten;
    ColumnListing listing(fileSystem, parent, inventory, **folder, memory != nullptr ? *memory : forgotten);
    if (const auto result = listing.read(); !result) return std::unexpected(result.error());
    listing.sort();
    return listing.items();
  } catch (const std::bad_alloc&) {
    return std::unexpected(std::move(outOfMemory));
  }
}

}  // namespace dunmere
