#include "sweeper/disk_sweeper_pane.h"

#include <algorithm>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "sweeper/byte_count_text.h"
#include "sweeper/snapshot_mailbox.h"

namespace dunmere {

DiskSweeperPane::DiskSweeperPane(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread,
                                 BoolBinding pendingGoToDrives, ScanOptions scanOptions)
    : fileSystem_(fileSystem),
      desktop_(desktop),
      mailbox_(std::make_shared<SnapshotMailbox>(mainThread)),
      pendingGoToDrives_(std::move(pendingGoToDrives)),
      scanOptions_(scanOptions) {}

DiskSweeperPane::~DiskSweeperPane() {
  mailbox_->close();
}

void DiskSweeperPane::setListener(Listener listener) {
  listener_ = std::move(listener);
}

void DiskSweeperPane::changed() {
  followQuestion();
  if (listener_) listener_();
}

void DiskSweeperPane::appear() {
  volumes_ = DiskSweeperScan::listVolumes(fileSystem_);
  answerPendingRequest();
  changed();
}

void DiskSweeperPane::pendingGoToDrivesChanged() {
  // Lowering the flag comes back here through its owner; that call finds nothing to do.
  if (answerPendingRequest()) changed();
}

bool DiskSweeperPane::answerPendingRequest() {
  if (!pendingGoToDrives_.get()) return false;
  clearSweep();
  pendingGoToDrives_.set(false);
  return true;
}

void DiskSweeperPane::selectVolume(std::optional<std::string> volumeID) {
  selectedVolumeID_ = std::move(volumeID);
  changed();
}

void DiskSweeperPane::startSweepSelectedVolume() {
  if (!selectedVolumeID_) return;
  const auto volume = std::ranges::find(volumes_, *selectedVolumeID_, &SweeperVolume::id);
  if (volume == volumes_.end()) return;
  sweepRoot_ = volume->url;
  beginBrowsing(volume->url);
}

void DiskSweeperPane::openFolderSweep() {
  const std::shared_ptr<SnapshotMailbox> mailbox = mailbox_;
  const std::optional<FileUrl> folder = desktop_.chooseFolder("Choose a folder to sweep (largest items first).");
  // While the chooser ran its event loop the pane may have been destroyed; only the mailbox can tell.
  if (mailbox->isClosed() || !folder) return;
  sweepRoot_ = *folder;
  beginBrowsing(*folder);
}

void DiskSweeperPane::backToVolumes() {
  clearSweep();
  changed();
}

void DiskSweeperPane::clearSweep() {
  // Selection, tokens, counters and status stay, and so does a running scan: nothing holds a handle to it.
  sweepRoot_.reset();
  inventory_.reset();
  phase_ = Phase::chooseTarget;
  pathDirectories_.clear();
  columnChildren_.clear();
  columnListings_.clear();
  selectedLeafURL_.reset();
  loadError_.reset();
  volumes_ = DiskSweeperScan::listVolumes(fileSystem_);
}

std::string DiskSweeperPane::volumeDetailText(const SweeperVolume& volume) {
  const std::int64_t usedBytes = std::max<std::int64_t>(volume.totalBytes - volume.freeBytes, 0);
  return byteCountText(volume.freeBytes) + " free, " + byteCountText(usedBytes) + " used, " +
         byteCountText(volume.totalBytes) + " total";
}

}  // namespace dunmere
