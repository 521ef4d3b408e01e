#include "sweeper/disk_sweeper_pane.h"

#include <algorithm>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "sweeper/answer_queue.h"
#include "sweeper/byte_count_text.h"
#include "sweeper/snapshot_mailbox.h"
#include "sweeper/volume_reader.h"

namespace dunmere {

DiskSweeperPane::DiskSweeperPane(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread,
                                 Background& background, BoolBinding pendingGoToDrives, ScanOptions scanOptions)
    : fileSystem_(fileSystem),
      desktop_(desktop),
      background_(background),
      mailbox_(std::make_shared<SnapshotMailbox>(mainThread)),
      answers_(std::make_shared<AnswerQueue>(mainThread, [this] { applyAnswers(); })),
      pendingGoToDrives_(std::move(pendingGoToDrives)),
      scanOptions_(scanOptions) {}

DiskSweeperPane::~DiskSweeperPane() {
  mailbox_->close();
  answers_->close();
  dropCandidate();
  for (OpenColumn& column : openColumns_) ColumnReader::close(std::move(column.reader));
}

/// Asks `questions`, and applies the answers that come within `moment`; ends early once all of them have come.
void DiskSweeperPane::ask(std::chrono::milliseconds moment, const std::function<void()>& questions) {
  const std::uint64_t first = lastQuestion_ + 1;
  const auto deadline = std::chrono::steady_clock::now() + moment;
  answers_->startAwaiting();
  questions();
  for (;;) {
    const AnswerQueue::Apply apply = answers_->take(isAwaiting(first) ? deadline : AnswerQueue::kNow);
    if (!apply) break;
    apply();
  }
  answers_->stopAwaiting();
  // Once for all the drives that have answered.
  auto volumes = volumeReader_ ? volumeReader_->takeNews() : std::nullopt;
  if (volumes) volumes_ = std::move(*volumes);
}

bool DiskSweeperPane::isAwaiting(std::uint64_t firstQuestion) const {
  const auto isOpen = [firstQuestion](const OpenColumn& column) { return column.listing.isOpenSince(firstQuestion); };
  return trashing_.isOpenSince(firstQuestion) || std::ranges::any_of(openColumns_, isOpen) ||
         (volumeQuestion_ >= firstQuestion && !volumeReader_->isDone());
}

void DiskSweeperPane::applyAnswers() {
  ask(std::chrono::milliseconds(0), [] {});
  changed();
}

void DiskSweeperPane::setListener(Listener listener) {
  listener_ = std::move(listener);
}

void DiskSweeperPane::changed() {
  followQuestion();
  for (OpenColumn& column : openColumns_) column.hasUntoldRows = false;
  if (listener_) listener_();
}

void DiskSweeperPane::appear() {
  ask(background_.moment(), [this] {
    if (!answerPendingRequest()) listVolumes();
  });
  changed();
}

void DiskSweeperPane::listVolumes() {
  volumeQuestion_ = ++lastQuestion_;
  volumeReader_ = VolumeReader::start(fileSystem_, background_, answers_);
}

void DiskSweeperPane::pendingGoToDrivesChanged() {
  // Lowering the flag comes back here through its owner; that call finds nothing to do.
  bool isAnswered = false;
  ask(background_.moment(), [&] { isAnswered = answerPendingRequest(); });
  if (isAnswered) changed();
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
  // Or a column and the question before the Trash would name it “..”.
  const FileUrl root = folder->standardized();
  sweepRoot_ = root;
  beginBrowsing(root);
}

void DiskSweeperPane::backToVolumes() {
  ask(background_.moment(), [this] { clearSweep(); });
  changed();
}

void DiskSweeperPane::clearSweep() {
  // Selection, tokens, counters and status stay, and so does a running scan: nothing holds a handle to it.
  sweepRoot_.reset();
  inventory_.reset();
  phase_ = Phase::chooseTarget;
  pathDirectories_.clear();
  const std::vector<ColumnLoadId> tokens = columnLoadIDs_;
  cutColumns(0);
  columnLoadIDs_ = tokens;
  selectedLeafURL_.reset();
  loadError_.reset();
  listVolumes();
}

std::string DiskSweeperPane::volumeDetailText(const SweeperVolume& volume) {
  if (volume.totalBytes == 0) return "Not answering yet";
  const std::int64_t usedBytes = std::max<std::int64_t>(volume.totalBytes - volume.freeBytes, 0);
  return byteCountText(volume.freeBytes) + " free, " + byteCountText(usedBytes) + " used, " +
         byteCountText(volume.totalBytes) + " total";
}

}  // namespace dunmere
