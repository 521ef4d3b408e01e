// The pane's footer: its texts, and what can be done with the selection.

#include "sweeper/byte_count_text.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/display_text.h"
#include "sweeper/error_text.h"

namespace dunmere {

namespace {

constexpr const char* kIndexingHint =
    "Indexing… folder sizes with + grow as more files are found. If large folders stay at zero, check Full Disk Access "
    "for this app in Settings (other users’ homes and some system paths).";

constexpr const char* kReadErrorsHint =
    "Some folders could not be read (permissions). Sizes may be low—enable Full Disk Access in Settings, or use Reveal "
    "in Finder.";

/// What is selected: its name, then either how much is known of its size or where it lies.
std::string selectionText(const FileUrl& target, const SweeperItem* item) {
  const std::string name = displayText(target.lastPathComponent());
  if (item && item->sizeIsPartialMinimum) {
    return name + " / at least " + byteCountText(item->sizeBytes) + " (partial scan)";
  }
  if (target.path() == "/") return name;
  return name + " / " + displayPath(target.deletingLastPathComponent().path());
}

}  // namespace

const FileUrl* DiskSweeperPane::revealURL() const {
  if (selectedLeafURL_) return &*selectedLeafURL_;
  return pathDirectories_.empty() ? nullptr : &pathDirectories_.back();
}

bool DiskSweeperPane::canTrashSelection() const {
  const FileUrl* target = revealURL();
  if (!target) return false;
  const std::string path = target->path();
  return !path.empty() && path != "/";
}

std::string DiskSweeperPane::footerStatus() const {
  if (loadError_) return *loadError_;
  if (inventory_ && !inventory_->scanComplete) return kIndexingHint;
  if (inventory_ && inventory_->hadReadErrors) return kReadErrorsHint;
  const FileUrl* target = revealURL();
  return target ? selectionText(*target, currentSelectedItem()) : "Select an item.";
}

std::string DiskSweeperPane::trashConfirmTitle() const {
  const FileUrl* target = revealURL();
  return "Move “" + (target ? displayText(target->lastPathComponent()) : "item") + "” to Trash?";
}

void DiskSweeperPane::requestTrash() {
  confirmTrash_ = true;
  changed();
}

void DiskSweeperPane::dismissTrash() {
  confirmTrash_ = false;
  changed();
}

void DiskSweeperPane::confirmedTrash() {
  confirmTrash_ = false;
  trashSelection();
  changed();
}

void DiskSweeperPane::performTrash() {
  trashSelection();
  changed();
}

void DiskSweeperPane::holdCandidate(const FileUrl& url) {
  if (!trashCandidate_ || trashCandidate_->url != url) trashCandidate_ = {url, desktop_.holdItem(url)};
}

/// Before the views learn what the question names it is held: what takes its place while the user thinks is not moved.
void DiskSweeperPane::followQuestion() {
  const FileUrl* target = confirmTrash_ ? revealURL() : nullptr;
  if (target) {
    holdCandidate(*target);
  } else {
    trashCandidate_.reset();
  }
}

void DiskSweeperPane::trashSelection() {
  const FileUrl* target = revealURL();
  if (!target) return;
  const FileUrl url = *target;
  loadError_.reset();
  holdCandidate(url);
  if (const auto moved = trashCandidate_->item->moveToTrash(); !moved) {
    loadError_ = errorText(moved.error());
    return;
  }
  selectedLeafURL_.reset();
  if (pathDirectories_.size() >= 2 && pathDirectories_.back() == url) {
    pathDirectories_.pop_back();
    cutColumns(pathDirectories_.size());
  }
  // The scan's totals are not corrected: what they hold was true when it was counted.
  listColumns();
}

void DiskSweeperPane::reveal() {
  if (const FileUrl* target = revealURL()) desktop_.reveal(*target);
}

}  // namespace dunmere
