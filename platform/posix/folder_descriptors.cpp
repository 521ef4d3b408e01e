#include "platform/posix/folder_descriptors.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>

namespace dunmere {

std::size_t FolderDescriptors::budgetOfProcess() {
  constexpr rlim_t kLeast = 4;
  constexpr rlim_t kMost = 512;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return kLeast;
  return std::clamp<rlim_t>(limit.rlim_cur / 2, kLeast, kMost);
}

FolderDescriptors::Waiting::Waiting(FolderDescriptors& descriptors)
    : descriptors_(descriptors), alone_(descriptors.scarce_) {
  const std::lock_guard lock(descriptors_.mutex_);
  descriptors_.waiting_ = std::this_thread::get_id();
  descriptors_.othersEnded_ = false;
}

FolderDescriptors::Waiting::~Waiting() {
  const std::lock_guard lock(descriptors_.mutex_);
  descriptors_.waiting_.reset();
}

/// Waits until another thread has ended a use since the last call; false when none is left that could.
bool FolderDescriptors::waitForOthers() {
  Lock lock(mutex_);
  useEnded_.wait(lock, [this] { return othersEnded_ || uses_ == 0; });
  return std::exchange(othersEnded_, false);
}

void FolderDescriptors::endUse() {
  --uses_;
  if (!waiting_ || waiting_ == std::this_thread::get_id()) return;
  othersEnded_ = true;
  useEnded_.notify_one();
}

void FolderDescriptors::keep(Slot& slot, UniqueDescriptor opened) {
  Lock lock(mutex_);
  place(slot, pinned_, std::move(opened));
  slot.pins_ = 1;  // never given back: no use that others could wait for
  closeBeyondBudget(lock);
}

std::expected<FolderDescriptors::Pin, int> FolderDescriptors::adopt(Slot& slot, UniqueDescriptor opened) {
  Lock lock(mutex_);
  if (slot.descriptor_) return pinLocked(slot);
  if (slot.wasClosed_) {
    const auto identity = folderIdentity(opened.get());
    if (!identity || identity != slot.identity_) return std::unexpected(ESTALE);
  }
  place(slot, idle_, std::move(opened));
  Pin pin = pinLocked(slot);
  closeBeyondBudget(lock);
  return pin;
}

FolderDescriptors::Pin FolderDescriptors::pin(Slot& slot) {
  const std::lock_guard lock(mutex_);
  return slot.descriptor_ ? pinLocked(slot) : Pin();
}

void FolderDescriptors::place(Slot& slot, std::list<Slot*>& list, UniqueDescriptor opened) {
  // The list first: it may run out of memory, and a slot with a descriptor must have its place there.
  slot.place_ = list.insert(list.end(), &slot);
  slot.descriptor_ = std::move(opened);
  ++slot.generation_;
}

FolderDescriptors::Pin FolderDescriptors::pinLocked(Slot& slot) {
  if (slot.pins_++ == 0) pinned_.splice(pinned_.end(), idle_, slot.place_);
  ++uses_;
  Pin pin;
  pin.descriptors_ = this;
  pin.slot_ = &slot;
  pin.descriptor_ = slot.descriptor_.get();
  pin.generation_ = slot.generation_;
  return pin;
}

void FolderDescriptors::release(Slot& slot) {
  Lock lock(mutex_);
  if (--slot.pins_ == 0) {
    idle_.splice(idle_.end(), pinned_, slot.place_);
    closeBeyondBudget(lock);
  }
  endUse();
}

void FolderDescriptors::forget(Slot& slot) {
  Lock lock(mutex_);
  if (!slot.descriptor_) return;
  (slot.pins_ > 0 ? pinned_ : idle_).erase(slot.place_);
  close(std::move(slot.descriptor_), lock);
}

void FolderDescriptors::closeIdle() {
  Lock lock(mutex_);
  while (!idle_.empty()) closeOldest(lock);
}

/// One is enough: never are more open, unless all the others are pinned.
void FolderDescriptors::closeBeyondBudget(Lock& lock) {
  if (idle_.size() + pinned_.size() > budget_ && !idle_.empty()) closeOldest(lock);
}

void FolderDescriptors::closeOldest(Lock& lock) {
  Slot& slot = *idle_.front();
  slot.identity_ = folderIdentity(slot.descriptor_.get());
  slot.wasClosed_ = true;
  idle_.pop_front();
  close(std::move(slot.descriptor_), lock);
}

void FolderDescriptors::close(UniqueDescriptor closing, Lock& lock) {
  ++uses_;
  lock.unlock();
  closing = UniqueDescriptor();
  lock.lock();
  endUse();
}

}  // namespace dunmere
