#include "engine/read_ahead.h"

#include <system_error>
#include <utility>

namespace dunmere {

namespace {

// Enough to keep every reader busy while the consumer is held up, and small against what is counted. With 128 folders a
// scan of 1,000,000 files took a twentieth to a tenth longer, with the cache warm as well as cold; 1,024 gain little
// more, and descriptors of folders that wait would have to be closed and opened anew.
constexpr std::size_t kMostHeldBytes = 512 * 1024;
constexpr std::size_t kMostTakenFolders = 512;

}  // namespace

ReadAhead::ReadAhead(FileSystem& fileSystem, std::shared_ptr<OpenFolder> root, unsigned readers)
    : fileSystem_(fileSystem), firstWaiting_(order_.end()), root_(std::move(root)), begunAhead_(order_.end()) {
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
  for (; firstWaiting_ != order_.end(); ++firstWaiting_) {
    TakenFolder* const taken = std::get_if<TakenFolder>(&*firstWaiting_);
    if (taken == nullptr) break;
    taken->beforeFirstWaiting = true;
  }
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
void ReadAhead::hold(TakenFolder& folder, std::string& files, std::size_t nameBytes) {
  const std::size_t bytes = files.size() + nameBytes;
  if (folder.files.empty()) {
    folder.files.swap(files);
  } else {
    folder.files += files;
  }
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
  if (!folder.beforeFirstWaiting) return;
  const Order::iterator passed = std::exchange(firstWaiting_, std::next(place));
  for (auto behind = std::next(firstWaiting_); behind != passed; ++behind) takenAt(behind).beforeFirstWaiting = false;
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
  begin(claimed, reading);
  const Order::iterator place = claimed.place;
  // A batch is handed over when the next one has been read, so that a folder of one batch changes hands in one go.
  std::string files;
  std::size_t nameBytes = 0;
  auto progress = reading.readBatch();
  for (; progress == FolderReading::Progress::more; progress = reading.readBatch()) {
    if (!handOver(place, files, nameBytes)) return;
    files = reading.files();
    nameBytes = reading.folderNameBytes();
  }
  finish(place, reading, files, nameBytes, progress == FolderReading::Progress::failed);
} catch (...) {
  fail(claimed.place, std::current_exception());
}

void ReadAhead::begin(Claim& claimed, FolderReading& reading) {
  // Name and depth never change, and a folder stays in the list until it has ended: no lock is needed for them.
  reading.begin(*claimed.parent, takenAt(claimed.place).name);
  claimed.parent.reset();
  claimed.emptied.clear();
}

/// Hands over the last of a folder.
void ReadAhead::finish(Order::iterator place, FolderReading& reading, std::string& files, std::size_t nameBytes,
                       bool failed) {
  Order subfolders = subfoldersOf(reading, takenAt(place).depth);
  const std::lock_guard lock(mutex_);
  hold(takenAt(place), files, nameBytes);
  end(place, subfolders, failed);
  if (place == head_) headAdvanced_.notify_one();
}

/// Adds to what the consumer may take and waits while too much is held. False when reading is to stop.
bool ReadAhead::handOver(Order::iterator place, std::string& files, std::size_t nameBytes) {
  if (files.empty() && nameBytes == 0) return !stop_;
  Lock lock(mutex_);
  TakenFolder& folder = takenAt(place);
  hold(folder, files, nameBytes);
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
      if (head_ == begunAhead_) {
        std::swap(reading_, ahead_);
        begunAhead_ = order_.end();
      }
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
  const TakenFolder& folder = takenAt(head_);
  // What the consumer reads itself no other thread writes to: no lock is needed to look.
  return folder.readByConsumer && folder.files.empty() ? readFiles() : takeHandedOver();
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
  Lock lock(mutex_);
  TakenFolder& folder = takenAt(head_);
  waitForHead(lock);
  handedOver_.clear();
  handedOver_.swap(folder.files);
  folder.heldBytes -= handedOver_.size();
  heldBytes_ -= handedOver_.size();
  updateFull();
  if (stoppedReaders_ > 0) roomCame_.notify_all();
  if (!handedOver_.empty()) return handedOver_;
  if (folder.fault) std::rethrow_exception(folder.fault);
  failed_ = folder.failed;
  return std::nullopt;
}

/// Until there are files, or the end, of the head. The consumer reads ahead meanwhile: threads that fall asleep and are
/// woken for every folder cost more than the reading. (1,000,000 files in the cache, one reader: 2.1 s, so 1.0 s; eight
/// readers and a cold cache: a tenth less.)
void ReadAhead::waitForHead(Lock& lock) {
  const TakenFolder& folder = takenAt(head_);
  while (!folder.finished && folder.files.empty()) {
    if (!mayReadAhead()) {
      headAdvanced_.wait(lock);
      continue;
    }
    Claim claimed = claim(firstWaiting());
    lock.unlock();
    readOneAhead(std::move(claimed));
    lock.lock();
  }
}

bool ReadAhead::mayReadAhead() {
  return !full_ && begunAhead_ == order_.end() && firstWaiting() != order_.end();
}

/// Reads a folder ahead of its turn. Of a giant one only the beginning, so that the consumer is not kept from the head:
/// the rest is read when it is its turn.
void ReadAhead::readOneAhead(Claim claimed) try {
  begin(claimed, ahead_);
  constexpr int kMostBatches = 2;  // a small folder takes one, and another read to find that it has ended
  std::string files;
  std::size_t nameBytes = 0;
  auto progress = FolderReading::Progress::more;
  for (int batch = 0; batch < kMostBatches && progress == FolderReading::Progress::more; ++batch) {
    progress = ahead_.readBatch();
    files += ahead_.files();
    nameBytes += ahead_.folderNameBytes();
  }
  if (progress != FolderReading::Progress::more) {
    finish(claimed.place, ahead_, files, nameBytes, progress == FolderReading::Progress::failed);
    return;
  }
  const std::lock_guard lock(mutex_);
  hold(takenAt(claimed.place), files, nameBytes);
  takenAt(claimed.place).readByConsumer = true;
  begunAhead_ = claimed.place;
} catch (...) {
  fail(claimed.place, std::current_exception());
}

}  // namespace dunmere
