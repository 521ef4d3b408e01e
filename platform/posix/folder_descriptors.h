// FolderDescriptors: keeps a bounded number of folders open, so that a tree may be deeper than a process may hold
// descriptors.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <list>
#include <optional>
#include <utility>

#include "engine/thread_annotations.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// Device and inode tell one open folder from any other, as long as it exists.
using FolderIdentity = std::pair<std::uint64_t, std::uint64_t>;

/// A descriptor in use is pinned. Of the others the least recently used one is closed when more than `budget` are open;
/// its folder then opens itself again and hands the new descriptor in. Thread-safe.
class FolderDescriptors {
 public:
  class Slot;
  class Pin;

  /// `budget`: descriptors to keep open at most, at least 1. Only pinned ones can exceed it.
  explicit FolderDescriptors(std::size_t budget) : budget_(budget) {}

  /// Half of what this process may open, between 8 and 512: the rest of the process opens files too, and more than a
  /// few hundred open folders make no walk faster.
  static std::size_t budgetOfProcess();

  /// Calls `open`, which opens a file and gives a std::expected<..., int>. When it fails because the process has no
  /// descriptor left, closes those that are not pinned and calls it once more.
  template <typename Open>
  auto openWithRetry(Open open) {
    auto result = open();
    if (result || (result.error() != EMFILE && result.error() != ENFILE)) return result;
    closeIdle();
    return open();
  }

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
  void release(Slot& slot);
  void forget(Slot& slot);

  // What is taken is closed without the mutex: closing may wait for a server.
  void insert(Slot& slot, std::list<Slot*>& list, UniqueDescriptor opened) REQUIRES(mutex_);
  Pin pinLocked(Slot& slot) REQUIRES(mutex_);
  UniqueDescriptor takeIdleBeyond(std::size_t count) REQUIRES(mutex_);

  const std::size_t budget_;
  Mutex mutex_;                                 // also for the slots
  std::list<Slot*> idle_ GUARDED_BY(mutex_);    // least recently used first
  std::list<Slot*> pinned_ GUARDED_BY(mutex_);  // in no order
};

/// One folder's entry among the descriptors. Lives as long as the folder; must not outlive `descriptors`.
class FolderDescriptors::Slot {
 public:
  explicit Slot(FolderDescriptors& descriptors) : descriptors_(descriptors) {}
  ~Slot() { descriptors_.forget(*this); }
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;

 private:
  friend class FolderDescriptors;

  FolderDescriptors& descriptors_;
  UniqueDescriptor descriptor_;
  bool wasClosed_ = false;
  std::optional<FolderIdentity> identity_;  // known only once a descriptor had to be closed: most never are
  std::uint64_t generation_ = 0;
  int pins_ = 0;
  std::list<Slot*>::iterator listed_;  // in one of the lists while there is a descriptor
};

/// Keeps one slot's descriptor open. Move-only.
class FolderDescriptors::Pin {
 public:
  Pin() = default;
  Pin(Pin&& other) noexcept : slot_(std::exchange(other.slot_, nullptr)) {}
  Pin& operator=(Pin&& other) noexcept {
    std::swap(slot_, other.slot_);
    return *this;
  }
  ~Pin() {
    if (slot_ != nullptr) slot_->descriptors_.release(*slot_);
  }

  explicit operator bool() const { return slot_ != nullptr; }
  int descriptor() const { return slot_->descriptor_.get(); }
  /// Counts the slot's descriptors: while it stays the same, so does the position of a read.
  std::uint64_t generation() const { return slot_->generation_; }

 private:
  friend class FolderDescriptors;
  explicit Pin(Slot& slot) : slot_(&slot) {}

  Slot* slot_ = nullptr;
};

}  // namespace dunmere
