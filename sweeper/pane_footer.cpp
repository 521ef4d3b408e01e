// The pane's footer: its texts, and what can be done with the selection.

#include <algorithm>

#include "sweeper/answer_queue.h"
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
std::string selectionText(const FileUrl& target, const std::optional<SweeperItem>& item) {
  const std::string name = displayText(target.lastPathComponent());
  if (item && item->sizeIsPartialMinimum) {
    return name + " / at least " + byteCountText(item->sizeBytes) + " (partial scan)";
  }
  if (target.path() == "/") return name;
  return name + " / " + displayPath(target.deletingLastPathComponent().path());
}

/// Apart from the listings of the same folder, which may take long.
std::string trashPlace(const FileUrl& item) {
  return "trash " + item.deletingLastPathComponent().bytes();
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
  ask(background_.moment(), [this] { followQuestion(); });
  changed();
}

void DiskSweeperPane::dismissTrash() {
  confirmTrash_ = false;
  changed();
}

void DiskSweeperPane::confirmedTrash() {
  confirmTrash_ = false;
  ask(background_.moment(), [this] { trashSelection(); });
  changed();
}

void DiskSweeperPane::performTrash() {
  ask(background_.moment(), [this] { trashSelection(); });
  changed();
}

/// Holds the item at `url` in the background, unless that is being done.
void DiskSweeperPane::holdCandidate(const FileUrl& url) {
  if (trashCandidate_ && trashCandidate_->url == url) return;
  dropCandidate();
  trashCandidate_ = {url, std::make_shared<std::unique_ptr<TrashableItem>>()};
  trashing_.asked = ++lastQuestion_;
  const auto hold = [this, &desktop = desktop_, answers = answers_, url, item = trashCandidate_->item,
                     question = trashing_.asked] {
    *item = desktop.holdItem(url);
    answers->put([this, question] { trashing_.answered = question; });
  };
  background_.run(trashPlace(url), hold);
}

/// Letting the item go may free what others have deleted meanwhile, which takes time.
void DiskSweeperPane::dropCandidate() {
  if (!trashCandidate_) return;
  background_.run(trashPlace(trashCandidate_->url), [item = std::move(trashCandidate_->item)] { item->reset(); });
  trashCandidate_.reset();
}

/// What takes its place while the user thinks is not moved: the item is held from the question on.
void DiskSweeperPane::followQuestion() {
  const FileUrl* target = confirmTrash_ ? revealURL() : nullptr;
  if (target) {
    holdCandidate(*target);
  } else {
    dropCandidate();
  }
}

void DiskSweeperPane::trashSelection() {
  const FileUrl* target = revealURL();
  if (!target) return;
  const FileUrl url = *target;
  loadError_.reset();
  holdCandidate(url);
  trashing_.asked = ++lastQuestion_;
  const auto move = [this, answers = answers_, url, item = std::move(trashCandidate_->item),
                     question = trashing_.asked] {
    const auto moved = (*item)->moveToTrash();
    item->reset();
    answers->put([this, url, question, moved] {
      trashing_.answered = question;
      applyTrashed(url, moved);
    });
  };
  trashCandidate_.reset();
  background_.run(trashPlace(url), move);
}

void DiskSweeperPane::applyTrashed(const FileUrl& url, const std::expected<void, SweepError>& moved) {
  if (!moved) {
    loadError_ = errorText(moved.error());
    return;
  }
  const FileUrl asked = revealURL() ? *revealURL() : FileUrl();
  // The selection may have gone elsewhere while the disk was slow.
  if (selectedLeafURL_ == url) selectedLeafURL_.reset();
  const auto open = std::find(pathDirectories_.begin(), pathDirectories_.end(), url);
  const auto column = static_cast<std::size_t>(open - pathDirectories_.begin());
  if (column >= 1 && open != pathDirectories_.end()) {
    selectedLeafURL_.reset();  // it lay in what has gone
    pathDirectories_.erase(open, pathDirectories_.end());
    cutColumns(column);
  }
  // An open question must not come to name something else because of an answer.
  if (!revealURL() || *revealURL() != asked) confirmTrash_ = false;
  // The scan's totals are not corrected: what they hold was true when it was counted.
  listColumns(Urgency::atOnce);
}

void DiskSweeperPane::reveal() {
  if (const FileUrl* target = revealURL()) desktop_.reveal(*target);
}

}  // namespace dunmere
