#include "engine/column_listing.h"

#include <atomic>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include "engine/sizes_on_disk.h"

namespace dunmere {

namespace {

std::uint64_t nextEdition() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

}  // namespace

std::expected<void, SweepError> ColumnListing::list(FileSystem& fileSystem, const FileUrl& parent,
                                                    const SweepInventory& inventory, Rows& rows) {
  // Made while there still is some.
  SweepError error{SweepAttempt::openFolder, parent, std::make_error_code(std::errc::not_enough_memory), {}};
  try {
    const auto folder = fileSystem.openFolder(parent, EntryDetail::kinds);
    auto result = folder ? listOpen(fileSystem, **folder, parent, inventory, rows) : std::unexpected(folder.error());
    if (result) return result;
    error = std::move(result.error());
  } catch (const std::bad_alloc&) {
  }
  *this = ColumnListing();
  rows.clear();
  return std::unexpected(std::move(error));
}

std::expected<void, SweepError> ColumnListing::listOpen(FileSystem& fileSystem, OpenFolder& folder,
                                                        const FileUrl& parent, const SweepInventory& inventory,
                                                        Rows& rows) {
  const auto others = entries_.read(folder);
  if (!others) return std::unexpected(others.error());
  const bool isFirst = *others || parent != parent_ || rows.size() != entries_.size();
  if (isFirst) begin(parent, rows);

  const bool isSameScan = updateCounted(inventory);
  const bool looksAtAll = isFirst || !isSameScan || inventory.scanComplete;
  const FileSystem::Instant now = fileSystem.now();
  looksAtAll ? rounds_.begin(entries_.size(), now) : rounds_.goOn(now);
  std::vector<RowPosition> changed = updateFacts(folder, inventory, isFirst);
  const bool partialMark = !inventory.scanComplete || inventory.hadReadErrors;
  if (changed.empty() && partialMark == partialMark_) return {};
  partialMark_ = partialMark;
  ++revision_;
  if (!changed.empty()) {
    const std::vector<RowPosition> before = order_.positions();
    order_.update(fileSystem, entries_, facts_, std::move(changed));
    if (rows.empty()) {
      make(rows);
    } else {
      arrange(before, rows);
    }
  }
  showFacts(rows);
  return {};
}

void ColumnListing::begin(const FileUrl& parent, Rows& rows) {
  rows.clear();
  parent_ = parent;
  edition_ = nextEdition();
  children_ = CountedChildren(parent.key());
  counted_.assign(entries_.size(), {});
  facts_.assign(entries_.size(), {});
  order_.begin(entries_.size());
}

/// Whether what was counted before still holds.
bool ColumnListing::updateCounted(const SweepInventory& inventory) {
  const bool isSameScan = children_.continues(inventory);
  if (!isSameScan) counted_.assign(entries_.size(), {});
  children_.follow(inventory, [this](std::string_view name, bool isFolder, std::int64_t bytes) {
    const auto position = entries_.find(name, isFolder ? EntryKind::folder : EntryKind::regularFile);
    if (position) counted_[*position] = bytes;
  });
  return isSameScan;
}

bool ColumnListing::isUncountedFile(std::size_t position) const {
  return entries_.kind(position) == EntryKind::regularFile && !counted_[position];
}

/// Whether the row's facts would need a look at the disk, and it is not its turn for that.
bool ColumnListing::mayKeepFacts(std::size_t position) const {
  return (isUncountedFile(position) || entries_.kind(position) == EntryKind::symbolicLink) &&
         !rounds_.includes(position);
}

/// The rows that have other facts than before; the first time these are all.
std::vector<RowPosition> ColumnListing::updateFacts(OpenFolder& folder, const SweepInventory& inventory, bool isFirst) {
  std::vector<RowPosition> files;
  for (RowPosition position = 0; position < facts_.size(); ++position) {
    if (isUncountedFile(position) && rounds_.includes(position)) files.push_back(position);
  }
  const std::vector<std::int64_t> sizes = sizesOnDisk(folder, entries_, files);

  RowFactFinder finder(inventory, folder);
  std::vector<RowPosition> changed;
  std::size_t nextFile = 0;
  for (RowPosition position = 0; position < facts_.size(); ++position) {
    if (mayKeepFacts(position)) continue;
    const auto bytes = isUncountedFile(position) ? sizes[nextFile++] : counted_[position];
    const RowFacts facts = finder.factsOf(entries_.name(position), entries_.kind(position), bytes);
    if (!isFirst && facts == facts_[position]) continue;
    facts_[position] = facts;
    changed.push_back(position);
  }
  return changed;
}

void ColumnListing::make(Rows& rows) const {
  rows.reserve(facts_.size());
  for (const RowPosition row : order_.positions()) {
    const std::string_view name = entries_.name(row);
    rows.push_back({.url = parent_.appending(name), .name = std::string(name)});
  }
}

/// Brings the rows, which stand as `before` says, into their order; each row that moves is moved once.
void ColumnListing::arrange(const std::vector<RowPosition>& before, Rows& rows) const {
  const std::vector<RowPosition>& after = order_.positions();
  std::vector<RowPosition> indexBefore(before.size());
  for (RowPosition index = 0; index < before.size(); ++index) indexBefore[before[index]] = index;
  std::vector<bool> isPlaced(after.size(), false);
  for (RowPosition start = 0; start < after.size(); ++start) {
    if (isPlaced[start] || after[start] == before[start]) continue;
    // A round of rows each of which takes the place of the next.
    SweeperItem first = std::move(rows[start]);
    RowPosition index = start;
    for (;;) {
      isPlaced[index] = true;
      const RowPosition source = indexBefore[after[index]];
      if (source == start) break;
      rows[index] = std::move(rows[source]);
      index = source;
    }
    rows[index] = std::move(first);
  }
}

void ColumnListing::showFacts(Rows& rows) const {
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const RowFacts& facts = facts_[order_.positions()[index]];
    SweeperItem& row = rows[index];
    row.isDirectory = facts.isDirectory;
    row.isSymbolicLink = facts.isSymbolicLink;
    row.sizeBytes = facts.sizeBytes;
    row.sizeIsPartialMinimum = facts.isDirectory && partialMark_;
  }
}

}  // namespace dunmere
