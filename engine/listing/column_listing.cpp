#include "engine/listing/column_listing.h"

#include <algorithm>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

#include "engine/disk_sweeper_scan.h"

namespace dunmere {

namespace {

SweepError noMemoryFor(const FileUrl& folder) {
  return {SweepAttempt::openFolder, folder, std::make_error_code(std::errc::not_enough_memory), {}};
}

}  // namespace

std::expected<ColumnRows, SweepError> ColumnListing::list(FileSystem& fileSystem, const SweepInventory& inventory,
                                                          Looks looks, const LookAtLinks& lookAtLinks) {
  SweepError error = noMemoryFor(parent_);  // made while there still is some
  try {
    auto updated = update(fileSystem, inventory, looks, lookAtLinks);
    if (updated) return rows_;
    error = std::move(updated.error());
  } catch (const std::bad_alloc&) {
  }
  *this = ColumnListing(std::move(parent_));
  return std::unexpected(std::move(error));
}

std::expected<void, SweepError> ColumnListing::update(FileSystem& fileSystem, const SweepInventory& inventory,
                                                      Looks looks, const LookAtLinks& lookAtLinks) {
  const auto folder = fileSystem.openFolder(parent_, EntryDetail::kinds);
  if (!folder) return std::unexpected(folder.error());
  const std::shared_ptr<const EntryNames> before = entries_.names();
  const auto others = entries_.read(**folder);
  if (!others) return std::unexpected(others.error());
  if (*others) beginEntries(*before);
  if (*others || inventory.pathBytes != pathBytes_) updateCounted(inventory.pathBytes);
  const std::vector<std::string> links = lookAtFiles(fileSystem, **folder, looks);
  keepTargets(lookAtLinks(*folder, links));
  std::vector<RowPosition> changed = updateRows(inventory);
  const bool partialMark = !inventory.scanComplete || inventory.hadReadErrors;
  const ColumnRows::Content& shown = rows_.content();
  const bool isShown = shown.names == entries_.names() && shown.partialMark == partialMark;
  if (isShown && changed.empty()) return {};
  order_.update(fileSystem, *entries_.names(), current_, std::move(changed));
  publish(partialMark);
  return {};
}

/// Starts over with other entries than `before`, but keeps what was seen of those that are still there.
void ColumnListing::beginEntries(const EntryNames& before) {
  current_.clear();
  order_.begin(entries_.size());
  nextLook_ = 0;
  for (const auto& [position, seen] : std::exchange(seen_, {})) {
    const bool isLink = !seen.key.empty();
    const EntryKind kind = isLink ? EntryKind::symbolicLink : EntryKind::regularFile;
    const auto now = entries_.find(before[position], kind);
    if (now && entries_.kind(*now) == kind) seen_.emplace(static_cast<RowPosition>(*now), seen);
  }
}

void ColumnListing::updateCounted(const PathBytes& pathBytes) {
  pathBytes_ = pathBytes;
  counted_.assign(entries_.size(), {});
  pathBytes.forEachChild(parent_.key(), [this](std::string_view name, bool isFolder, std::int64_t bytes) {
    const auto position = entries_.find(name, isFolder ? EntryKind::folder : EntryKind::regularFile);
    if (position) counted_[*position] = bytes;
  });
}

bool ColumnListing::needsLook(RowPosition position) const {
  const EntryKind kind = entries_.kind(position);
  return kind == EntryKind::symbolicLink || (kind == EntryKind::regularFile && !counted_[position]);
}

/// Looks at the files whose turn it is, from the one after the last that was looked at, and returns the links whose
/// turn it is.
std::vector<std::string> ColumnListing::lookAtFiles(FileSystem& fileSystem, OpenFolder& folder, Looks looks) {
  constexpr std::size_t kAtOnce = 16;      // few enough for a share that takes 10 ms for each
  constexpr std::int64_t kLooksALink = 4;  // what a link costs beside a file
  const FileSystem::Instant begin = fileSystem.now();
  const bool isBounded = looks == Looks::some;
  std::int64_t allowed = isBounded ? allowedLooks(begin) : std::numeric_limits<std::int64_t>::max();
  lastLook_ = begin;
  std::vector<std::string> links;
  std::vector<RowPosition> files;
  for (std::size_t visited = 0; visited < entries_.size() && allowed > 0; ++visited) {
    const RowPosition position = nextLook_;
    nextLook_ = position + 1 < entries_.size() ? position + 1 : 0;
    if (!needsLook(position)) continue;
    if (entries_.kind(position) == EntryKind::symbolicLink) {
      links.emplace_back(entries_.name(position));
      seen_.try_emplace(position, Seen{.kind = EntryKind::other, .bytes = 0, .key = "/"});
      allowed -= kLooksALink;
      continue;
    }
    files.push_back(position);
    --allowed;
    if (files.size() < kAtOnce) continue;
    measure(folder, std::exchange(files, {}));
    if (isBounded && fileSystem.now() - begin >= kLongestLook) break;
  }
  if (!files.empty()) measure(folder, files);
  return links;
}

ColumnListing::LinkTargets ColumnListing::waitForLinks(const std::shared_ptr<OpenFolder>& folder,
                                                       const std::vector<std::string>& names) {
  LinkTargets targets;
  for (const std::string& name : names) targets.emplace_back(name, folder->resolveLink(name));
  return targets;
}

void ColumnListing::keepTargets(const LinkTargets& targets) {
  for (const auto& [name, target] : targets) {
    const auto position = entries_.find(name, EntryKind::symbolicLink);
    if (!position || entries_.kind(*position) != EntryKind::symbolicLink) continue;  // gone meanwhile
    const EntryAttributes attributes = target.attributes.value_or(EntryAttributes());
    seen_[static_cast<RowPosition>(*position)] = {attributes.kind, attributes.countedBytes(), target.url.key()};
  }
}

std::int64_t ColumnListing::allowedLooks(FileSystem::Instant now) const {
  constexpr FileSystem::Instant kSecond = std::chrono::seconds(1);
  const FileSystem::Instant span = now - lastLook_.value_or(now);
  return std::max(kLeastLooks, std::min(span, kSecond) * kLooksPerSecond / kSecond);
}

/// A file that cannot be measured, or is no longer a regular file, has the size 0.
void ColumnListing::measure(OpenFolder& folder, const std::vector<RowPosition>& files) {
  EntryBatch batch;
  for (const RowPosition position : files) batch.add(entries_.name(position), {.kind = EntryKind::regularFile});
  const bool isMeasured = folder.measure(batch).has_value();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const EntryAttributes& attributes = batch.entries()[i].attributes;
    const bool isFile = isMeasured && attributes.kind == EntryKind::regularFile;
    seen_[files[i]] = {EntryKind::regularFile, isFile ? attributes.countedBytes() : 0, {}};
  }
}

/// Returns the rows that differ from before, which are all of them after beginEntries().
std::vector<RowPosition> ColumnListing::updateRows(const SweepInventory& inventory) {
  std::vector<ColumnRow> rows;
  rows.reserve(entries_.size());
  unseen_ = 0;
  for (RowPosition position = 0; position < entries_.size(); ++position) {
    rows.push_back(rowOf(position));
    if (needsLook(position) && !seen_.contains(position)) ++unseen_;
  }
  sizeLinks(inventory, rows);
  std::vector<RowPosition> changed;
  for (RowPosition position = 0; position < rows.size(); ++position) {
    if (current_.empty() || rows[position] != current_[position]) changed.push_back(position);
  }
  current_ = std::move(rows);
  return changed;
}

/// Without the size of a link, which sizeLinks() adds.
ColumnRow ColumnListing::rowOf(RowPosition position) const {
  const EntryKind kind = entries_.kind(position);
  ColumnRow row{.position = position,
                .isDirectory = kind == EntryKind::folder,
                .isSymbolicLink = kind == EntryKind::symbolicLink};
  if (kind == EntryKind::folder) row.sizeBytes = counted_[position].value_or(0);
  if (kind != EntryKind::regularFile) return row;
  if (counted_[position]) {
    row.sizeBytes = *counted_[position];
  } else if (const auto seen = seen_.find(position); seen != seen_.end()) {
    row.sizeBytes = seen->second.bytes;
  }
  return row;
}

/// A link has the size that was counted for its target, else for its own key (it may have been a file or folder when it
/// was scanned), else the size of the target on the disk.
void ColumnListing::sizeLinks(const SweepInventory& inventory, std::vector<ColumnRow>& rows) const {
  std::vector<RowPosition> links;
  std::vector<std::string> targets;
  for (const auto& [position, seen] : seen_) {
    const bool hasSize = seen.kind == EntryKind::folder || seen.kind == EntryKind::regularFile;
    if (!rows[position].isSymbolicLink || !hasSize) continue;
    links.push_back(position);
    targets.push_back(seen.key);
  }
  const std::vector<std::optional<std::int64_t>> ofTargets = inventory.pathBytes.findAll(targets);
  for (std::size_t i = 0; i < links.size(); ++i) {
    const Seen& seen = seen_.at(links[i]);
    ColumnRow& row = rows[links[i]];
    row.isDirectory = seen.kind == EntryKind::folder;
    const auto counted = ofTargets[i] ? ofTargets[i] : counted_[links[i]];
    row.sizeBytes = counted.value_or(row.isDirectory ? 0 : seen.bytes);
  }
}

void ColumnListing::publish(bool partialMark) {
  ColumnRows::Content content{
      .parent = parent_, .names = entries_.names(), .rows = {}, .partialMark = partialMark, .changes = {}};
  content.rows.reserve(current_.size());
  for (const RowPosition position : order_.positions()) content.rows.push_back(current_[position]);
  content.changes = changesBetween(rows_, content);
  rows_ = ColumnRows(std::move(content));
}

std::expected<std::vector<SweeperItem>, SweepError> DiskSweeperScan::columnChildren(FileSystem& fileSystem,
                                                                                    const FileUrl& parent,
                                                                                    const SweepInventory& inventory) {
  SweepError noMemory = noMemoryFor(parent);
  try {
    auto rows = ColumnListing(parent).list(fileSystem, inventory);
    if (!rows) return std::unexpected(std::move(rows.error()));
    return rows->items();
  } catch (const std::bad_alloc&) {
    return std::unexpected(std::move(noMemory));
  }
}

}  // namespace dunmere
