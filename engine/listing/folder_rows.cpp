#include "engine/listing/folder_rows.h"

#include <new>
#include <system_error>

namespace dunmere {

namespace {

SweepError failure(const FileUrl& folder, std::errc code) {
  return {SweepAttempt::openFolder, folder, std::make_error_code(code), {}};
}

}  // namespace

FolderRows::FolderRows(FileUrl folder, const ColumnRows& shown)
    : folder_(std::move(folder)),
      shown_(shown),
      entries_(std::unexpected(failure(folder_, std::errc::resource_unavailable_try_again))),
      noMemory_(failure(folder_, std::errc::not_enough_memory)) {}

void FolderRows::fail(SweepError error) {
  entries_ = std::unexpected(std::move(error));
  shown_ = {};
  pathBytes_.reset();
  counted_ = {};
  current_ = {};
  seen_.clear();
  order_ = {};
}

bool FolderRows::setEntries(ListedEntries entries) {
  if (entries_ && entries == *entries_) return false;
  const std::shared_ptr<const EntryNames> before = entries_ ? entries_->names() : nullptr;
  entries_ = std::move(entries);
  pathBytes_.reset();
  current_.clear();
  ListedEntries::Finder finder(*entries_);
  for (const auto& [position, seen] : std::exchange(seen_, {})) {
    const bool isLink = !seen.key.empty();
    const EntryKind kind = isLink ? EntryKind::symbolicLink : EntryKind::regularFile;
    const auto now = finder.find((*before)[position], kind);
    if (now && entries_->kind(*now) == kind) seen_.emplace(static_cast<RowPosition>(*now), seen);
  }
  return true;
}

void FolderRows::setFileBytes(RowPosition position, std::int64_t bytes) {
  seen_[position] = {EntryKind::regularFile, bytes, {}};
}

void FolderRows::setLinkAskedFor(RowPosition position) {
  seen_.try_emplace(position, Seen{.kind = EntryKind::other, .bytes = 0, .key = "/"});
}

void FolderRows::setTargets(const LinkTargets& targets) {
  ListedEntries::Finder finder(*entries_);
  for (const auto& [name, target] : targets) {
    const auto position = finder.find(name, EntryKind::symbolicLink);
    if (!position || entries_->kind(*position) != EntryKind::symbolicLink) continue;  // gone meanwhile
    const EntryAttributes attributes = target.attributes.value_or(EntryAttributes());
    seen_[static_cast<RowPosition>(*position)] = {attributes.kind, attributes.countedBytes(), target.url.key()};
  }
}

void FolderRows::count(const PathBytes& pathBytes) {
  if (pathBytes_ == pathBytes) return;
  pathBytes_.reset();
  counted_.assign(entries_->size(), {});
  ListedEntries::Finder finder(*entries_);
  pathBytes.forEachChild(folder_.key(), [&](std::string_view name, bool isFolder, std::int64_t bytes) {
    const auto position = finder.find(name, isFolder ? EntryKind::folder : EntryKind::regularFile);
    if (position) counted_[*position] = bytes;
  });
  pathBytes_ = pathBytes;
}

bool FolderRows::needsLook(RowPosition position) const {
  const EntryKind kind = entries_->kind(position);
  return kind == EntryKind::symbolicLink || (kind == EntryKind::regularFile && !counted_[position]);
}

std::expected<ColumnRows, SweepError> FolderRows::rows(FileSystem& fileSystem, const SweepInventory& inventory) {
  if (!entries_) return std::unexpected(entries_.error());
  try {
    if (!noMemory_) noMemory_ = failure(folder_, std::errc::not_enough_memory);
    if (current_.empty()) order_.begin(entries_->size());
    count(inventory.pathBytes);
    std::vector<RowPosition> changed = updateRows(inventory);
    const bool partialMark = !inventory.scanComplete || inventory.hadReadErrors;
    const ColumnRows::Content& shown = shown_.content();
    const bool isShown = shown.names == entries_->names() && shown.partialMark == partialMark;
    if (isShown && changed.empty()) return shown_;
    order_.update(fileSystem, *entries_->names(), current_, std::move(changed));
    publish(partialMark);
    return shown_;
  } catch (const std::bad_alloc&) {
    current_.clear();
    shown_ = {};
    if (!noMemory_) throw;
    return std::unexpected(*std::exchange(noMemory_, std::nullopt));
  }
}

/// Returns the rows that differ from before.
std::vector<RowPosition> FolderRows::updateRows(const SweepInventory& inventory) {
  std::vector<ColumnRow> rows;
  rows.reserve(entries_->size());
  unseen_ = 0;
  for (RowPosition position = 0; position < entries_->size(); ++position) {
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
ColumnRow FolderRows::rowOf(RowPosition position) const {
  const EntryKind kind = entries_->kind(position);
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
void FolderRows::sizeLinks(const SweepInventory& inventory, std::vector<ColumnRow>& rows) const {
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

void FolderRows::publish(bool partialMark) {
  ColumnRows::Content content{
      .parent = folder_, .names = entries_->names(), .rows = {}, .partialMark = partialMark, .changes = {}};
  content.rows.reserve(current_.size());
  for (const RowPosition position : order_.positions()) content.rows.push_back(current_[position]);
  content.changes = changesBetween(shown_, content);
  shown_ = ColumnRows(std::move(content));
}

}  // namespace dunmere
