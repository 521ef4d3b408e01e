// The pane's browsing: starting a scan, applying its snapshots, listing the open columns.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "sweeper/byte_count_text.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/error_text.h"
#include "sweeper/snapshot_mailbox.h"

namespace dunmere {

namespace {

std::string scanStatusText(const SweepInventory& snapshot) {
  const std::string counted = std::to_string(snapshot.fileCount) + " files · " + byteCountText(snapshot.totalFileBytes);
  return snapshot.scanComplete ? counted : counted + " scanned";
}

/// Does `work` in spite of a lack of memory, which may well be what it tells of: nobody else would tell it.
template <typename Work>
void doWhenPossible(Work work) {
  for (;;) {
    try {
      work();
      return;
    } catch (const std::bad_alloc&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
}

}  // namespace

ColumnLoadId ColumnLoadId::next() {
  static std::atomic<std::uint64_t> last = 0;
  return {++last};
}

void DiskSweeperPane::beginBrowsing(const FileUrl& root) {
  browse(root);
  startScan(root);
  changed();
}

void DiskSweeperPane::browse(const FileUrl& root) {
  loadError_.reset();
  inventory_ = SweepInventory::emptyFor(root);
  phase_ = Phase::browsing;
  scanStatus_ = "Starting…";
  scanFileCount_ = 0;
  scanBytesSoFar_ = 0;
  pathDirectories_ = {root};
  selectedLeafURL_.reset();
  columnChildren_ = {{}};
  columnLoadIDs_ = {ColumnLoadId::next()};
  listColumn(0, columnLoadIDs_.front(), *inventory_);
}

void DiskSweeperPane::startScan(const FileUrl& root) {
  // Everything below runs later on other threads, when this pane may be gone: `this` is used inside delivered work
  // only, which runs on the main thread and only while the pane keeps its mailbox open. A delivery that is cut short
  // leaves its work behind, so the work owns what it needs.
  const auto onUpdate = [this, mailbox = mailbox_](const SweepInventory& snapshot) {
    mailbox->deliver([this, snapshot] { applySnapshot(snapshot); });
  };
  const auto failOnFailure = [this, mailbox = mailbox_](std::future<DiskSweeperScan::ScanResult> scan) {
    // A scan that ended well has already delivered its last snapshot.
    const DiskSweeperScan::ScanResult result = scan.get();
    if (result) return;
    doWhenPossible([&] {
      mailbox->deliver([this, error = result.error()] {
        failScan(error);
        changed();
      });
    });
  };
  try {
    std::thread(failOnFailure, DiskSweeperScan::runProgressiveScan(fileSystem_, root, onUpdate, scanOptions_)).detach();
  } catch (const std::system_error& error) {
    failScan({.attempt = SweepAttempt::startScan, .path = root, .code = error.code(), .volumeName = {}});
  }
}

void DiskSweeperPane::applySnapshot(const SweepInventory& snapshot) {
  // Deliberately compares nothing: a scan left running by a newer sweep or by the way back to the drives still
  // overwrites what is shown.
  inventory_ = snapshot;
  scanFileCount_ = snapshot.fileCount;
  scanBytesSoFar_ = snapshot.totalFileBytes;
  scanStatus_ = scanStatusText(snapshot);
  listColumns();
  changed();
}

void DiskSweeperPane::failScan(const SweepError& error) {
  loadError_ = errorText(error);
  phase_ = Phase::chooseTarget;
  inventory_.reset();
  sweepRoot_.reset();
}

void DiskSweeperPane::reloadVisibleColumns() {
  listColumns();
  changed();
}

void DiskSweeperPane::listColumns() {
  if (!inventory_) return;
  const std::size_t count = std::min({columnLoadIDs_.size(), pathDirectories_.size(), columnChildren_.size()});
  for (std::size_t depth = 0; depth < count; ++depth) {
    listColumn(static_cast<std::ptrdiff_t>(depth), columnLoadIDs_[depth], *inventory_);
  }
}

void DiskSweeperPane::applyColumn(std::ptrdiff_t depth, ColumnLoadId id, const SweepInventory& inventory) {
  listColumn(depth, id, inventory);
  changed();
}

void DiskSweeperPane::listColumn(std::ptrdiff_t depth, ColumnLoadId id, const SweepInventory& inventory) {
  if (depth < 0) return;
  const auto column = static_cast<std::size_t>(depth);
  if (column >= columnLoadIDs_.size() || columnLoadIDs_[column] != id) return;
  if (column >= pathDirectories_.size()) return;
  columnListings_.resize(columnLoadIDs_.size());
  std::vector<SweeperItem> dropped;
  std::vector<SweeperItem>& rows = column < columnChildren_.size() ? columnChildren_[column] : dropped;
  const auto listed = columnListings_[column].list(fileSystem_, pathDirectories_[column], inventory, rows);
  if (!listed) loadError_ = errorText(listed.error());
}

}  // namespace dunmere
