#include "engine/listing/column_listing.h"

#include <algorithm>
#include <limits>
#include <new>
#include <span>
#include <system_error>
#include <utility>

#include "engine/disk_sweeper_scan.h"

namespace dunmere {

namespace {

SweepError noMemoryFor(const FileUrl& folder) {
  return {SweepAttempt::openFolder, folder, std::make_error_code(std::errc::not_enough_memory), {}};
}

}  // namespace

ColumnListing::LinkTargets ColumnListing::waitForLinks(const std::shared_ptr<OpenFolder>& folder,
                                                       const std::vector<std::string>& names) {
  LinkTargets targets;
  for (const std::string& name : names) targets.emplace_back(name, folder->resolveLink(name));
  return targets;
}

std::expected<ColumnRows, SweepError> ColumnListing::list(FileSystem& fileSystem, const SweepInventory& inventory,
                                                          Looks looks, const LookAtLinks& lookAtLinks) {
  read(fileSystem, inventory, looks, lookAtLinks);
  return rows(fileSystem, inventory);
}

std::expected<ColumnRows, SweepError> ColumnListing::rows(FileSystem& fileSystem, const SweepInventory& inventory) {
  const MutexLock lock(mutex_);
  return rows_.rows(fileSystem, inventory);
}

bool ColumnListing::hasUnseen() {
  const MutexLock lock(mutex_);
  return rows_.hasUnseen();
}

void ColumnListing::read(FileSystem& fileSystem, const SweepInventory& inventory, Looks looks,
                         const LookAtLinks& lookAtLinks) {
  SweepError error = noMemoryFor(parent_);  // made while there still is some
  try {
    const auto folder = fileSystem.openFolder(parent_, EntryDetail::kinds);
    const auto isRead = folder ? readEntries(**folder) : std::unexpected(folder.error());
    if (isRead) {
      const FileSystem::Instant now = fileSystem.now();
      const bool isBounded = looks == Looks::some;
      const Wanted wanted =
          chooseLooks(inventory, isBounded ? allowedLooks(now) : std::numeric_limits<std::int64_t>::max());
      lastLook_ = now;
      measure(fileSystem, **folder, wanted, looks);
      const LinkTargets targets = lookAtLinks(*folder, wanted.links);
      const MutexLock lock(mutex_);
      rows_.setTargets(targets);
      return;
    }
    error = isRead.error();
  } catch (const std::bad_alloc&) {
  }
  stamp_.reset();
  const MutexLock lock(mutex_);
  rows_.fail(std::move(error));
}

/// Reads the folder to its end, unless its stamp proves that it has not changed.
std::expected<void, SweepError> ColumnListing::readEntries(OpenFolder& folder) {
  const std::optional<FolderStamp> stamp = folder.stamp();
  if (stamp && stamp == stamp_) return {};
  auto entries = ListedEntries::read(folder);
  if (!entries) return std::unexpected(std::move(entries.error()));
  const MutexLock lock(mutex_);
  if (rows_.setEntries(std::move(*entries))) nextLook_ = 0;
  stamp_ = stamp;
  return {};
}

/// The rows whose turn it is, from the one after the last that was looked at.
ColumnListing::Wanted ColumnListing::chooseLooks(const SweepInventory& inventory, std::int64_t allowed) {
  constexpr std::int64_t kLooksALink = 4;  // what a link costs beside a file
  const MutexLock lock(mutex_);
  rows_.count(inventory.pathBytes);
  const ListedEntries& entries = rows_.entries();
  Wanted wanted{.names = entries.names(), .files = {}, .links = {}};
  for (std::size_t visited = 0; visited < entries.size() && allowed > 0; ++visited) {
    const RowPosition position = nextLook_;
    nextLook_ = position + 1 < entries.size() ? position + 1 : 0;
    if (!rows_.needsLook(position)) continue;
    const bool isLink = entries.kind(position) == EntryKind::symbolicLink;
    allowed -= isLink ? kLooksALink : 1;
    if (isLink) {
      wanted.links.emplace_back(entries.name(position));
      rows_.setLinkAskedFor(position);
    } else {
      wanted.files.push_back(position);
    }
  }
  return wanted;
}

/// A file that cannot be measured, or is no longer a regular file, has the size 0.
void ColumnListing::measure(FileSystem& fileSystem, OpenFolder& folder, const Wanted& wanted, Looks looks) {
  constexpr std::size_t kAtOnce = 16;  // few enough for a share that takes 10 ms for each
  std::span<const RowPosition> files = wanted.files;
  while (!files.empty()) {
    const std::span<const RowPosition> some = files.first(std::min(kAtOnce, files.size()));
    files = files.subspan(some.size());
    EntryBatch batch;
    for (const RowPosition position : some) batch.add((*wanted.names)[position], {.kind = EntryKind::regularFile});
    const bool isMeasured = folder.measure(batch).has_value();
    {
      const MutexLock lock(mutex_);
      for (std::size_t i = 0; i < some.size(); ++i) {
        const EntryAttributes& attributes = batch.entries()[i].attributes;
        const bool isFile = isMeasured && attributes.kind == EntryKind::regularFile;
        rows_.setFileBytes(some[i], isFile ? attributes.countedBytes() : 0);
      }
    }
    if (looks == Looks::all || files.empty() || fileSystem.now() - *lastLook_ < kLongestLook) continue;
    nextLook_ = files.front();
    return;
  }
}

std::int64_t ColumnListing::allowedLooks(FileSystem::Instant now) const {
  constexpr FileSystem::Instant kSecond = std::chrono::seconds(1);
  const FileSystem::Instant span = now - lastLook_.value_or(now);
  return std::max(kLeastLooks, std::min(span, kSecond) * kLooksPerSecond / kSecond);
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
