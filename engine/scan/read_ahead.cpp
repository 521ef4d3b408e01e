#include "engine/scan/read_ahead.h"

#include <new>
#include <utility>

namespace dunmere {
namespace {

// Enough to keep every reader busy while the consumer is held up, and small against what is counted; see
// docs/performance.md.
constexpr std::size_t kMostHeldBytes = 512 * 1024;
constexpr std::size_t kMostClaimedChunks = 512;

}  // namespace

ReadAhead::ReadAhead(FileSystem& fileSystem, std::shared_ptr<OpenFolder> root, unsigned readers)
    : fileSystem_(fileSystem), firstPending_(order_.end()), root_(std::move(root)) {
  order_.emplace_back();
  head_ = order_.begin();
  startReaders(readers);
}

ReadAhead::~ReadAhead() {
  {
    const MutexLock lock(mutex_);
    stop_ = true;
  }
  workCame_.notifyAll();
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

// ---- The list ----

/// Whether it belongs to the same folder as the element before it.
bool ReadAhead::continuesFolder(const Order::value_type& element) {
  const ClaimedChunk* const chunk = std::get_if<ClaimedChunk>(&element);
  return chunk != nullptr ? chunk->continuesFolder : std::holds_alternative<PendingChunk>(element);
}

ReadAhead::Iterator ReadAhead::firstPending() {
  for (; firstPending_ != order_.end(); ++firstPending_) {
    ClaimedChunk* const chunk = std::get_if<ClaimedChunk>(&*firstPending_);
    if (chunk == nullptr) break;
    chunk->beforeFirstPending = true;
  }
  return firstPending_;
}

/// Claims the first chunk of what is `pending`. When it throws std::bad_alloc, nothing is changed.
ReadAhead::Claim ReadAhead::claimAt(Iterator pending) {
  Order made(1);
  Claim claim{made.begin(), nullptr, {}};
  ClaimedChunk& chunk = claimed(claim.chunk);
  bool isUsedUp = true;
  if (auto* const folders = std::get_if<PendingFolders>(&*pending)) {
    chunk.name = folders->names.take();
    chunk.depth = folders->depth;
    claim.parent = folders->parent;
    isUsedUp = folders->names.empty();
  } else {
    const PendingChunk& rest = std::get<PendingChunk>(*pending);
    chunk.continuesFolder = true;
    chunk.depth = rest.depth;
    chunk.heldBytes = rest.heldBytes;
  }
  order_.splice(pending, made);
  if (isUsedUp) {
    firstPending_ = std::next(pending);
    claim.pending.splice(claim.pending.end(), order_, pending);
  }
  ++claimedCount_;
  updateFull();
  return claim;
}

void ReadAhead::setHeld(std::size_t& share, std::size_t bytes) {
  heldBytes_ += bytes - share;
  share = bytes;
  updateFull();
}

void ReadAhead::insertAfter(Iterator chunk, Order& pending) {
  if (pending.empty()) return;
  order_.splice(std::next(chunk), pending);
  if (!claimed(chunk).beforeFirstPending) return;
  const Iterator passed = std::exchange(firstPending_, std::next(chunk));
  for (auto it = std::next(firstPending_); it != passed; ++it) claimed(it).beforeFirstPending = false;
}

void ReadAhead::updateFull() {
  if (heldBytes_ >= kMostHeldBytes || claimedCount_ >= kMostClaimedChunks) {
    full_ = true;
  } else if (full_ && heldBytes_ <= kMostHeldBytes / 2 && claimedCount_ <= kMostClaimedChunks / 2) {
    full_ = false;
    workCame_.notifyOne();
  }
}

bool ReadAhead::mayClaimMore() {
  return !full_ && firstPending() != order_.end();
}

/// Readers wake each other one by one, so that a few pending folders do not wake all of them at once.
void ReadAhead::wakeReader() {
  if (idleReaders_ > 0 && mayClaimMore()) workCame_.notifyOne();
}

// ---- Reading ----

void ReadAhead::read(Claim claim, FolderReading& reading) noexcept try {
  if (claim.parent) {
    // A name never changes, and a chunk stays in the list until it is finished: this needs no mutex.
    reading.begin(*claim.parent, claimed(claim.chunk).name);
    claim.parent.reset();
  } else {
    reading.begin(std::move(std::get<PendingChunk>(claim.pending.front()).rest));
  }
  claim.pending.clear();
  readChunk(claim.chunk, reading);
} catch (...) {
  fail(claim.chunk, std::current_exception());
}

void ReadAhead::readChunk(Iterator chunk, FolderReading& reading) {
  const bool hasRest = reading.readOn();
  if (hasRest) insertRest(chunk, reading);
  reading.measure();
  finish(chunk, reading, hasRest);
}

void ReadAhead::insertRest(Iterator it, FolderReading& reading) {
  Order pending;
  auto& rest = std::get<PendingChunk>(pending.emplace_back(PendingChunk{reading.takeRest()}));
  const MutexLock lock(mutex_);
  ClaimedChunk& chunk = claimed(it);
  rest.depth = chunk.depth;
  // The names of folders that were found went on to the rest.
  setHeld(chunk.heldBytes, 0);
  setHeld(rest.heldBytes, rest.rest.heldBytes());
  insertAfter(it, pending);
  wakeReader();
  if (idleReaders_ == 0 && consumerWaits_) consumerMayGoOn_.notifyOne();
}

void ReadAhead::finish(Iterator it, FolderReading& reading, bool hasRest) {
  std::string files(reading.files());
  Order subfolders;
  std::size_t nameBytes = 0;
  if (!hasRest) {
    FolderNames names = reading.takeSubfolders();
    nameBytes = names.bytes();
    std::shared_ptr<OpenFolder> folder = reading.takeFolder();
    if (!names.empty())
      subfolders.emplace_back(PendingFolders{std::move(folder), std::move(names), claimed(it).depth + 1});
  }
  const MutexLock lock(mutex_);
  ClaimedChunk& chunk = claimed(it);
  setHeld(chunk.heldBytes, files.size() + nameBytes);
  chunk.files = std::move(files);
  chunk.failed = reading.failed();
  chunk.finished = true;
  insertAfter(it, subfolders);
  if (it == head_) consumerMayGoOn_.notifyOne();
}

void ReadAhead::fail(Iterator it, std::exception_ptr fault) noexcept {
  const MutexLock lock(mutex_);
  ClaimedChunk& chunk = claimed(it);
  chunk.fault = std::move(fault);
  chunk.finished = true;
  if (it == head_) consumerMayGoOn_.notifyOne();
}

// ---- The readers ----

void ReadAhead::readAsThread() {
  fileSystem_.enterUtilityPriority();
  try {
    FolderReading reading;
    const MutexLock lock(mutex_);
    while (waitForWork()) {
      Claim claim = claimAt(firstPending());
      wakeReader();
      readWithoutMutex(std::move(claim), reading);
    }
  } catch (const std::bad_alloc&) {
    // Nothing is lost: what could not be claimed is still pending. One reader less.
  }
}

/// False when there will be none.
bool ReadAhead::waitForWork() {
  ++idleReaders_;
  while (!stop_ && !mayClaimMore()) workCame_.wait(mutex_);
  --idleReaders_;
  return !stop_;
}

void ReadAhead::readWithoutMutex(Claim claim, FolderReading& reading) {
  mutex_.unlock();
  read(std::move(claim), reading);
  mutex_.lock();
}

// ---- The consumer ----

std::optional<ReadAhead::Folder> ReadAhead::nextFolder() {
  failed_ = false;
  if (root_) {
    reading_.begin(std::exchange(root_, nullptr));
    readChunk(head_, reading_);
  } else if (!advance()) {
    return std::nullopt;
  }
  const ClaimedChunk& chunk = claimed(head_);
  return Folder{chunk.name, chunk.depth};
}

/// Drops the consumed chunk and goes on to the next, which the consumer reads if nobody has claimed it; false when
/// there is none.
bool ReadAhead::advance() {
  Order consumed;
  Claim claim;
  {
    const MutexLock lock(mutex_);
    if (order_.empty()) return false;
    if (firstPending_ == head_) ++firstPending_;
    headTaken_ = false;
    setHeld(claimed(head_).heldBytes, 0);
    --claimedCount_;
    consumed.splice(consumed.end(), order_, head_);
    updateFull();
    if (order_.empty()) return false;
    head_ = order_.begin();
    if (std::holds_alternative<ClaimedChunk>(*head_)) return true;
    claim = claimAt(head_);
    head_ = claim.chunk;
  }
  read(std::move(claim), reading_);
  return true;
}

std::optional<std::string_view> ReadAhead::nextFiles() {
  for (;; advance()) {
    if (!headTaken_) takeFiles();
    if (!std::exchange(headTaken_, true) && !files_.empty()) return files_;
    if (folderEnded_) return std::nullopt;
  }
}

/// Takes the head's files, and learns whether its folder ends with it.
void ReadAhead::takeFiles() {
  const MutexLock lock(mutex_);
  wakeReader();  // for what the consumer has found itself
  waitForHead();
  ClaimedChunk& chunk = claimed(head_);
  if (chunk.fault) std::rethrow_exception(chunk.fault);
  if (chunk.failed) failed_ = true;
  files_.clear();
  files_.swap(chunk.files);
  setHeld(chunk.heldBytes, chunk.heldBytes - files_.size());
  const auto next = std::next(head_);
  folderEnded_ = next == order_.end() || !continuesFolder(*next);
}

/// Until the head is finished. The consumer reads ahead meanwhile: threads that fall asleep and are woken for every
/// folder cost more than the reading, see docs/performance.md.
void ReadAhead::waitForHead() {
  while (!claimed(head_).finished) {
    if (mayClaimMore()) {
      readWithoutMutex(claimAt(firstPending()), reading_);
    } else {
      consumerWaits_ = true;
      consumerMayGoOn_.wait(mutex_);
      consumerWaits_ = false;
    }
  }
}

}  // namespace dunmere
