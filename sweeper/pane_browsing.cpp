// The pane's browsing: starting a scan, applying its snapshots, listing the open columns.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "sweeper/answer_queue.h"
#include "sweeper/byte_count_text.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/error_text.h"
#include "sweeper/memory_retry.h"
#include "sweeper/snapshot_mailbox.h"

namespace dunmere {

namespace {

std::string scanStatusText(const SweepInventory& snapshot) {
  const std::string counted = std::to_string(snapshot.fileCount) + " files · " + byteCountText(snapshot.totalFileBytes);
  return snapshot.scanComplete ? counted : counted + " scanned";
}

}  // namespace

ColumnLoadId ColumnLoadId::next() {
  static std::atomic<std::uint64_t> last = 0;
  return {++last};
}

void DiskSweeperPane::beginBrowsing(const FileUrl& root) {
  ask(background_.moment(), [&] {
    browse(root);
    startScan(root);
  });
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
  cutColumns(0);
  addColumn(root, {});
  listColumn(0, columnLoadIDs_.front(), *inventory_, Urgency::atOnce);
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
    untilMemoryAllows([&] {
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
  // Waits for no listing: counts and status are there already.
  const Urgency urgency = snapshot.scanComplete ? Urgency::atOnce : Urgency::paced;
  ask(std::chrono::milliseconds(0), [&] { listColumns(urgency); });
  changed();
}

void DiskSweeperPane::failScan(const SweepError& error) {
  loadError_ = errorText(error);
  phase_ = Phase::chooseTarget;
  inventory_.reset();
  sweepRoot_.reset();
}

void DiskSweeperPane::reloadVisibleColumns() {
  ask(background_.moment(), [this] { listColumns(Urgency::atOnce); });
  changed();
}

void DiskSweeperPane::listColumns(Urgency urgency) {
  if (!inventory_) return;
  const std::size_t count = std::min({columnLoadIDs_.size(), pathDirectories_.size(), columnChildren_.size()});
  for (std::size_t depth = 0; depth < count; ++depth) {
    listColumn(static_cast<std::ptrdiff_t>(depth), columnLoadIDs_[depth], *inventory_, urgency);
  }
}

void DiskSweeperPane::applyColumn(std::ptrdiff_t depth, ColumnLoadId id, const SweepInventory& inventory) {
  ask(background_.moment(), [&] { listColumn(depth, id, inventory, Urgency::atOnce); });
  changed();
}

void DiskSweeperPane::listColumn(std::ptrdiff_t depth, ColumnLoadId id, const SweepInventory& inventory,
                                 Urgency urgency) {
  if (depth < 0) return;
  const auto column = static_cast<std::size_t>(depth);
  if (column >= columnLoadIDs_.size() || columnLoadIDs_[column] != id) return;
  if (column >= openColumns_.size()) return;
  OpenColumn& open = openColumns_[column];
  open.listing.asked = ++lastQuestion_;
  open.reader->request({open.listing.asked, inventory, urgency});
}

void DiskSweeperPane::applyListing(ColumnLoadId id, std::uint64_t question,
                                   std::expected<ColumnRows, SweepError> rows) {
  const auto column = static_cast<std::size_t>(std::ranges::find(columnLoadIDs_, id) - columnLoadIDs_.begin());
  if (column >= openColumns_.size()) return;
  // Rows tell what changed since those before, so the listener must have heard of these.
  if (openColumns_[column].hasUntoldRows) changed();
  Question& listing = openColumns_[column].listing;
  listing.answered = std::max(listing.answered, question);
  openColumns_[column].hasUntoldRows = true;
  columnChildren_[column] = rows.value_or(ColumnRows());
  if (!rows) loadError_ = errorText(rows.error());
}

bool DiskSweeperPane::isReadingColumn(std::size_t column) const {
  return column < openColumns_.size() && columnChildren_[column].empty() && openColumns_[column].listing.answered == 0;
}

}  // namespace dunmere
