// FolderDescriptors: keeps a bounded number of folders open, so that a tree may be deeper than a process may hold
// descriptors.
#pragma once

#include <cerrno>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platform/posix/folder_identity.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// A descriptor in use is pinned. Of the others the one unused for longest is closed when more than `budget` are open;
/// its folder notices, opens itself anew and hands the new descriptor in. When the process has none left, a thread that
/// needs one waits for another to be done with its own. Thread-safe.
class FolderDescriptors {
 public:
  class Slot;
  class Pin;

  /// `budget`: descriptors to keep open at most, at least 1. Only pinned ones can go beyond it.
  explicit FolderDescriptors(std::size_t budget) : budget_(budget) {}

  /// Half of what this process may open, between 4 and 512: the rest of the process opens files too, and more than a
  /// few hundred open folders make no walk faster.
  static std::size_t budgetOfProcess();

  /// Whether an errno value says that there is no descriptor left.
  static bool isShortage(int error) { return error == EMFILE || error == ENFILE; }

  /// Calls `open`, which opens files and gives a std::expected<..., int>. When it fails for want of a descriptor, calls
  /// it again as other threads unpin theirs; the last such failure stands only when no other thread uses one. The
  /// calling thread must have no pin.
  template <typename Open>
  auto openWhenPossible(Open open);

  /// Hands `opened` to a slot that has none, and keeps it open as long as the slot lives.
  void keep(Slot& slot, UniqueDescriptor opened);

  /// Hands `opened` to `slot`. If the slot got a descriptor meanwhile, that one stays and `opened` is closed. Fails
  /// with ESTALE when the slot held a descriptor before and `opened` is another folder.
  std::expected<Pin, int> adopt(Slot& slot, UniqueDescriptor opened);

  /// The slot's descriptor, kept open while the pin lives; an empty pin when it has been closed.
  Pin pin(Slot& slot);

  /// Closes every descriptor that is not pinned.
  void closeIdle();

 private:
  class Waiting;
  using Lock = std::unique_lock<std::mutex>;

  void release(Slot& slot);
  void forget(Slot& slot);
  bool waitForOthers();

  // Under the lock. Closing gives it up meanwhile: it may take its time.
  void closeOldest(Lock& lock);
  void closeBeyondBudget(Lock& lock);
  void close(UniqueDescriptor closing, Lock& lock);
  void place(Slot& slot, std::list<Slot*>& list, UniqueDescriptor opened);
  Pin pinLocked(Slot& slot);
  void endUse();

  const std::size_t budget_;
  std::mutex scarce_;  // held by the one thread that waits for a descriptor; taken before mutex_

  std::mutex mutex_;         // guards all below
  std::list<Slot*> idle_;    // unused for longest first
  std::list<Slot*> pinned_;  // in no order; with those that are kept
  int uses_ = 0;             // descriptors that will soon be idle or closed: pinned ones, and those being closed
  std::optional<std::thread::id> waiting_;
  bool othersEnded_ = false;  // a use by another thread than the waiting one
  std::condition_variable useEnded_;
};

/// Makes the calling thread the one that waits for a descriptor. One at a time: of several that each hold what the
/// others need, none would ever get on.
class FolderDescriptors::Waiting {
 public:
  explicit Waiting(FolderDescriptors& descriptors);
  ~Waiting();
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  FolderDescriptors& descriptors_;
  const std::lock_guard<std::mutex> alone_;
};

template <typename Open>
auto FolderDescriptors::openWhenPossible(Open open) {
  auto result = open();
  if (result || !isShortage(result.error())) return result;
  const Waiting waiting(*this);
  do {
    closeIdle();
    result = open();
  } while (!result && isShortage(result.error()) && waitForOthers());
  return result;
}

/// One folder's place among the descriptors. Lives as long as the folder; must not outlive `descriptors`.
class FolderDescriptors::Slot {
 public:
  explicit Slot(FolderDescriptors& descriptors) : descriptors_(descriptors) {}
  ~Slot() { descriptors_.forget(*this); }
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;

 private:
  friend class FolderDescriptors;

  // Guarded by the descriptors' mutex.
  FolderDescriptors& descriptors_;
  UniqueDescriptor descriptor_;
  bool wasClosed_ = false;
  std::optional<FolderIdentity> identity_;  // known only once a descriptor had to be closed: most never are
  std::uint64_t generation_ = 0;
  int pins_ = 0;
  std::list<Slot*>::iterator place_;
};

/// Keeps one slot's descriptor open. Move-only.
class FolderDescriptors::Pin {
 public:
  Pin() = default;
  Pin(Pin&& other) noexcept
      : descriptors_(other.descriptors_),
        slot_(std::exchange(other.slot_, nullptr)),
        descriptor_(other.descriptor_),
        generation_(other.generation_) {}
  Pin& operator=(Pin&& other) noexcept {
    std::swap(descriptors_, other.descriptors_);
    std::swap(slot_, other.slot_);
    std::swap(descriptor_, other.descriptor_);
    std::swap(generation_, other.generation_);
    return *this;
  }
  ~Pin() {
    if (slot_ != nullptr) descriptors_->release(*slot_);
  }

  explicit operator bool() const { return slot_ != nullptr; }
  int descriptor() const { return descriptor_; }
  /// Counts the slot's descriptors: while it stays the same, so does the position of a read.
  std::uint64_t generation() const { return generation_; }

 private:
  friend class FolderDescriptors;

  FolderDescriptors* descriptors_ = nullptr;
  Slot* slot_ = nullptr;
  int descriptor_ = -1;
  std::uint64_t generation_ = 0;
};

}  // namespace dunmere
