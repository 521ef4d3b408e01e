#include "sweeper/column_reader.h"

#include <algorithm>
#include <utility>

#include "sweeper/memory_retry.h"

namespace dunmere {

namespace {

/// Nine times as long as the listing took, so that a scan beside it is hardly slowed down; but a disk that is slow
/// rather than busy is asked again soon. Nobody reads sizes that change more than twenty times a second, and showing
/// them costs more than finding them.
Background::Delay pauseAfter(Background::Delay listing) {
  constexpr Background::Delay kShortest = std::chrono::milliseconds(50);
  constexpr Background::Delay kLongest = std::chrono::seconds(2);
  return std::clamp(9 * listing, kShortest, kLongest);
}

}  // namespace

std::shared_ptr<ColumnReader> ColumnReader::make(FileSystem& fileSystem, Background& background, const FileUrl& folder,
                                                 const ColumnRows& shown, Answer answer) {
  std::shared_ptr<ColumnReader> reader(new ColumnReader(fileSystem, background, folder, shown, std::move(answer)));
  const auto late = [weak = std::weak_ptr(reader)] {
    if (const auto asker = weak.lock()) asker->requestLinks();
  };
  reader->links_ = std::make_shared<LinkLooks>(background, folder.bytes(), late);
  return reader;
}

ColumnReader::ColumnReader(FileSystem& fileSystem, Background& background, const FileUrl& folder,
                           const ColumnRows& shown, Answer answer)
    : fileSystem_(fileSystem),
      background_(background),
      folder_(folder),
      answer_(std::move(answer)),
      listing_(folder, shown),
      sizingDelay_(pauseAfter(Background::Delay(0))) {}

/// Lists once more for the links whose targets have come since; without asking for them again, or it would never end.
void ColumnReader::requestLinks() {
  Background::Delay delay{0};
  {
    const MutexLock lock(mutex_);
    if (next_ || !last_) return;
    next_ = last_;
    next_->onlyNewLinks = true;
    if (isListing_) return;
    delay = std::max<Background::Delay>(delay, pausedUntil_ - Clock::now());
    isScheduled_ = true;
  }
  scheduleListing(delay);
}

void ColumnReader::request(Request request) {
  const bool isPaced = request.urgency == Urgency::paced;
  Background::Delay delay{0};
  bool isListing = false;
  {
    const MutexLock lock(mutex_);
    next_ = std::move(request);
    isListing = isListing_;
    if (!isListing) {
      if (isScheduled_ && isPaced) return;
      if (isPaced) delay = std::max<Background::Delay>(delay, pausedUntil_ - Clock::now());
      isScheduled_ = true;
    }
  }
  isListing ? scheduleSizing() : scheduleListing(delay);
}

void ColumnReader::close(std::shared_ptr<ColumnReader> reader) {
  {
    const MutexLock lock(reader->mutex_);
    reader->next_.reset();
    reader->last_.reset();
  }
  reader->links_->close();
  Background& background = reader->background_;
  const std::string place = reader->folder_.bytes();
  background.run(place, [last = std::move(reader)] {});
}

void ColumnReader::schedule(const std::string& place, void (ColumnReader::*step)(), Background::Delay delay) {
  // A closed column does not wait for its delay to go.
  const auto run = [weak = weak_from_this(), step] {
    if (const auto reader = weak.lock()) (*reader.*step)();
  };
  untilMemoryAllows([&] { background_.run(place, run, delay); });
}

void ColumnReader::scheduleListing(Background::Delay delay) {
  schedule(folder_.bytes(), &ColumnReader::work, delay);
}

/// Sizes that are known already do not wait for a slow disk. A prompt one has answered by then.
void ColumnReader::scheduleSizing() {
  Background::Delay delay{0};
  {
    const MutexLock lock(mutex_);
    if (std::exchange(isSizing_, true)) return;
    delay = sizingDelay_;
  }
  untilMemoryAllows([&] { schedule("sizes of " + folder_.bytes(), &ColumnReader::size, delay); });
}

void ColumnReader::work() {
  std::optional<Request> request;
  untilMemoryAllows([&] { request = takeRequest(); });
  if (request) list(std::move(*request));
}

std::optional<ColumnReader::Request> ColumnReader::takeRequest() {
  const MutexLock lock(mutex_);
  if (next_) last_ = {next_->number, next_->inventory, Urgency::paced};
  isScheduled_ = false;
  isListing_ = next_.has_value();
  return std::exchange(next_, std::nullopt);
}

void ColumnReader::list(Request request) {
  using Looks = ColumnListing::Looks;
  const Clock::time_point begin = Clock::now();
  const auto lookAtLinks = [&](const auto& folder, const auto& names) {
    return links_->look(folder, names, request.onlyNewLinks);
  };
  const Looks looks = request.inventory.scanComplete ? Looks::all : Looks::some;
  scheduleSizing();
  untilMemoryAllows([&] { listing_.read(fileSystem_, request.inventory, looks, lookAtLinks); });
  {
    const MutexLock lock(answering_);
    answer_(request.number, newestRows());
  }
  const bool hasUnseen = listing_.hasUnseen();
  const Clock::time_point end = Clock::now();
  const Background::Delay pause = pauseAfter(end - begin);
  bool isUrgent = false;
  {
    const MutexLock lock(mutex_);
    isListing_ = false;
    pausedUntil_ = end + pause;
    // Nobody asks for what is still missing: a scan that is stuck publishes no snapshots.
    if (!next_ && hasUnseen) next_ = {request.number, std::move(request.inventory), Urgency::paced};
    if (!next_) return;
    isUrgent = next_->urgency == Urgency::atOnce;
    isScheduled_ = true;
  }
  scheduleListing(isUrgent ? Background::Delay(0) : pause);
}

/// While a listing goes on; it answers with the newest sizes itself when it ends.
void ColumnReader::size() {
  const MutexLock answering(answering_);
  const Clock::time_point begin = Clock::now();
  {
    const MutexLock lock(mutex_);
    isSizing_ = false;
    if (!isListing_) return;
  }
  Rows rows = newestRows();
  if (rows) answer_(0, std::move(rows));
  const MutexLock lock(mutex_);
  sizingDelay_ = pauseAfter(Clock::now() - begin);
}

ColumnReader::Rows ColumnReader::newestRows() {
  std::optional<SweepInventory> inventory;
  untilMemoryAllows([&] {
    const MutexLock lock(mutex_);
    if (next_)
      inventory = next_->inventory;
    else if (last_)
      inventory = last_->inventory;
  });
  Rows rows;
  if (inventory) untilMemoryAllows([&] { rows = listing_.rows(fileSystem_, *inventory); });
  return rows;  // nobody asks for those of a closed column
}

}  // namespace dunmere
