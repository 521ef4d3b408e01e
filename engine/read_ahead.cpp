#include "engine/read_ahead.h"

#include <system_error>
#include <utility>

namespace dunmere {

namespace {

// Enough to keep every reader busy while the consumer is held up, and small against what is counted.
constexpr std::size_t kMostHeldBytes = 512 * 1024;
constexpr std::size_t kMostTakenFolders = 128;

}  // namespace

ReadAhead::ReadAhead(FileSystem& fileSystem, std::shared_ptr<OpenFolder> root, unsigned readers)
    : fileSystem_(fileSystem), firstWaiting_(order_.end()), root_(std::move(root)) {
  TakenFolder rootFolder;
  rootFolder.readByConsumer = true;
  order_.emplace_back(std::move(rootFolder));
  head_ = order_.begin();
  startReaders(readers);
}

ReadAhead::~ReadAhead() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  workCame_.notify_all();
  roomCame_.notify_all();
  for (std::thread& reader : readers_) reader.join();
}

void ReadAhead::startReaders(unsigned readers) {
  try {
    readers_.reserve(readers);
    for (unsigned i = 0; i < readers; ++i) readers_.emplace_back([this] { readAsThread(); });
  } catch (const std::exception&) {
    // Too few threads or too little memory: the readers that did start, and the consumer, do all the work.
  }
}

// ---- The list, under the lock ----

ReadAhead::Order::iterator ReadAhead::firstWaiting() {
  while (firstWaiting_ != order_.end() && std::holds_alternative<TakenFolder>(*firstWaiting_)) ++firstWaiting_;
  return firstWaiting_;
}

/// Takes the first of the folders that wait at `waiting`. Either that or std::bad_alloc and nothing is changed.
ReadAhead::Claim ReadAhead::claim(Order::iterator waiting) {
  auto& folders = std::get<WaitingFolders>(*waiting);
  Order taken;
  auto& folder = std::get<TakenFolder>(taken.emplace_back(std::in_place_type<TakenFolder>));
  folder.name = folders.names.take();
  folder.depth = folders.depth;

  Claim claim{taken.begin(), folders.parent, {}};
  order_.splice(waiting, taken);
  if (folders.names.empty()) {
    firstWaiting_ = std::next(waiting);
    claim.emptied.splice(claim.emptied.end(), order_, waiting);
  }
  ++takenCount_;
  updateFull();
  return claim;
}

/// Keeps what was read of a folder until the consumer takes it. Either that or std::bad_alloc and nothing is changed.
void ReadAhead::hold(TakenFolder& folder, std::string files, std::size_t nameBytes) {
  const std::size_t bytes = files.size() + nameBytes;
  if (!files.empty()) folder.files.push_back(std::move(files));
  folder.heldBytes += bytes;
  heldBytes_ += bytes;
  updateFull();
}

/// Ends the reading of a folder: its sub-folders come next.
void ReadAhead::end(Order::iterator place, Order& subfolders, bool failed) {
  TakenFolder& folder = takenAt(place);
  folder.failed = failed;
  folder.finished = true;
  if (subfolders.empty()) return;
  order_.splice(std::next(place), subfolders);
  // They may be the first ones now. Looking from the start passes at most kMostTakenFolders.
  firstWaiting_ = order_.begin();
}

void ReadAhead::updateFull() {
  if (heldBytes_ >= kMostHeldBytes || takenCount_ >= kMostTakenFolders) {
    full_ = true;
  } else if (full_ && heldBytes_ <= kMostHeldBytes / 2 && takenCount_ <= kMostTakenFolders / 2) {
    full_ = false;
    workCame_.notify_one();
    roomCame_.notify_all();
  }
}

// ---- The readers ----

void ReadAhead::readAsThread() {
  fileSystem_.enterUtilityPriority();
  try {
    FolderReading reading;
    Lock lock(mutex_);
    while (waitForWork(lock)) {
      Claim claimed = claim(firstWaiting());
      // Readers wake each other one by one, so that a few waiting folders do not wake all of them at once.
      if (idleReaders_ > 0 && !full_ && firstWaiting() != order_.end()) workCame_.notify_one();
      lock.unlock();
      readClaimed(std::move(claimed), reading);
      lock.lock();
    }
  } catch (const std::bad_alloc&) {
    // No folder is lost: the one that could not be taken still waits in the list. One reader less.
  }
}

bool ReadAhead::waitForWork(Lock& lock) {
  ++idleReaders_;
  workCame_.wait(lock, [this] { return stop_ || (!full_ && firstWaiting() != order_.end()); });
  --idleReaders_;
  return !stop_;
}

void ReadAhead::readClaimed(Claim claimed, FolderReading& reading) try {
  const Order::iterator place = claimed.place;
  // Name and depth never change, and a folder stays in the list until it has ended: no lock is needed for them.
  reading.begin(*claimed.parent, takenAt(place).name);
  claimed.parent.reset();
  claimed.emptied.clear();
  // A batch is handed over when the next one has been read, so that a folder of one batch changes hands in one go.
  std::string files;
  std::size_t nameBytes = 0;
  auto progress = reading.readBatch();
  for (; progress == FolderReading::Progress::more; progress = reading.readBatch()) {
    if (!handOver(place, std::exchange(files, std::string(reading.files())),
                  std::exchange(nameBytes, reading.folderNameBytes())))
      return;
  }
  Order subfolders = subfoldersOf(reading, takenAt(place).depth);
  const std::lock_guard lock(mutex_);
  hold(takenAt(place), std::move(files), nameBytes);
  end(place, subfolders, progress == FolderReading::Progress::failed);
  if (place == head_) headAdvanced_.notify_one();
} catch (...) {
  fail(claimed.place, std::current_exception());
}

/// Adds to what the consumer may take and waits while too much is held. False when reading is to stop.
bool ReadAhead::handOver(Order::iterator place, std::string files, std::size_t nameBytes) {
  if (files.empty() && nameBytes == 0) return !stop_;
  Lock lock(mutex_);
  TakenFolder& folder = takenAt(place);
  hold(folder, std::move(files), nameBytes);
  if (place == head_) headAdvanced_.notify_one();
  ++stoppedReaders_;
  roomCame_.wait(lock, [&] { return stop_ || !full_ || (place == head_ && folder.files.empty()); });
  --stoppedReaders_;
  return !stop_;
}

void ReadAhead::fail(Order::iterator place, std::exception_ptr fault) noexcept {
  const std::lock_guard lock(mutex_);
  takenAt(place).fault = std::move(fault);
  Order none;
  end(place, none, true);
  if (place == head_) headAdvanced_.notify_one();
}

/// The list element of the sub-folders that were found, or no element.
ReadAhead::Order ReadAhead::subfoldersOf(FolderReading& reading, std::size_t depth) {
  Order subfolders;
  FolderNames names = reading.takeSubfolders();
  std::shared_ptr<OpenFolder> folder = reading.takeFolder();
  if (!names.empty()) subfolders.emplace_back(WaitingFolders{std::move(folder), std::move(names), depth + 1});
  return subfolders;
}

// ---- The consumer ----

std::optional<ReadAhead::Folder> ReadAhead::nextFolder() {
  failed_ = false;
  if (root_) {
    reading_.begin(std::move(root_));
  } else {
    if (!advance()) return std::nullopt;
  }
  const TakenFolder& folder = takenAt(head_);
  return Folder{folder.name, folder.depth};
}

/// Drops the consumed folder and goes on to the next; false when there is none. One that nobody took the consumer
/// takes.
bool ReadAhead::advance() {
  Order consumed;
  Claim claimed;
  {
    const std::lock_guard lock(mutex_);
    if (order_.empty()) return false;
    if (firstWaiting_ == head_) ++firstWaiting_;
    heldBytes_ -= takenAt(head_).heldBytes;
    --takenCount_;
    consumed.splice(consumed.end(), order_, head_);
    updateFull();
    if (order_.empty()) return false;
    head_ = order_.begin();
    if (std::holds_alternative<TakenFolder>(*head_)) {
      if (stoppedReaders_ > 0) roomCame_.notify_all();
      return true;
    }
    claimed = claim(head_);
    head_ = claimed.place;
    takenAt(head_).readByConsumer = true;
  }
  reading_.begin(*claimed.parent, takenAt(head_).name);
  return true;
}

std::optional<std::string_view> ReadAhead::nextFiles() {
  return takenAt(head_).readByConsumer ? readFiles() : takeHandedOver();
}

std::optional<std::string_view> ReadAhead::readFiles() {
  auto progress = reading_.readBatch();
  while (progress == FolderReading::Progress::more && reading_.files().empty()) progress = reading_.readBatch();
  if (progress == FolderReading::Progress::more) return reading_.files();

  failed_ = progress == FolderReading::Progress::failed;
  Order subfolders = subfoldersOf(reading_, takenAt(head_).depth);
  const std::lock_guard lock(mutex_);
  end(head_, subfolders, failed_);
  if (idleReaders_ > 0 && !full_) workCame_.notify_one();
  return std::nullopt;
}

std::optional<std::string_view> ReadAhead::takeHandedOver() {
  if (nextHandedOver_ == handedOver_.size()) {
    handedOver_.clear();
    nextHandedOver_ = 0;
    Lock lock(mutex_);
    TakenFolder& folder = takenAt(head_);
    headAdvanced_.wait(lock, [&] { return folder.finished || !folder.files.empty(); });
    handedOver_.swap(folder.files);
    for (const std::string& files : handedOver_) {
      folder.heldBytes -= files.size();
      heldBytes_ -= files.size();
    }
    updateFull();
    if (stoppedReaders_ > 0) roomCame_.notify_all();
    if (handedOver_.empty()) {
      if (folder.fault) std::rethrow_exception(folder.fault);
      failed_ = folder.failed;
      return std::nullopt;
    }
  }
  return handedOver_[nextHandedOver_++];
}

}  // namespace dunmere
