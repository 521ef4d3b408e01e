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

std::expected<FolderDescriptors::Pin, int> FolderDescriptors::adopt(Slot& slot, UniqueDescriptor opened) {
  const std::lock_guard lock(mutex_);
  if (slot.descriptor_) return pinLocked(slot);
  if (slot.wasClosed_) {
    const auto identity = folderIdentity(opened.get());
    if (!identity || identity != slot.identity_) return std::unexpected(ESTALE);
  }
  // The list first: it may run out of memory, and a slot with a descriptor must have its place there.
  slot.place_ = idle_.insert(idle_.end(), &slot);
  slot.descriptor_ = std::move(opened);
  ++slot.generation_;
  Pin pin = pinLocked(slot);
  keepToBudget();
  return pin;
}

FolderDescriptors::Pin FolderDescriptors::pin(Slot& slot) {
  const std::lock_guard lock(mutex_);
  return slot.descriptor_ ? pinLocked(slot) : Pin();
}

FolderDescriptors::Pin FolderDescriptors::pinLocked(Slot& slot) {
  if (slot.pins_++ == 0) pinned_.splice(pinned_.end(), idle_, slot.place_);
  Pin pin;
  pin.descriptors_ = this;
  pin.slot_ = &slot;
  pin.descriptor_ = slot.descriptor_.get();
  pin.generation_ = slot.generation_;
  return pin;
}

void FolderDescriptors::release(Slot& slot) {
  const std::lock_guard lock(mutex_);
  if (--slot.pins_ > 0) return;
  idle_.splice(idle_.end(), pinned_, slot.place_);
  keepToBudget();
}

void FolderDescriptors::forget(Slot& slot) {
  UniqueDescriptor closing;
  const std::lock_guard lock(mutex_);
  if (!slot.descriptor_) return;
  idle_.erase(slot.place_);
  closing = std::move(slot.descriptor_);
}

void FolderDescriptors::closeIdle() {
  const std::lock_guard lock(mutex_);
  while (!idle_.empty()) evictOldest();
}

void FolderDescriptors::keepToBudget() {
  while (idle_.size() + pinned_.size() > budget_ && !idle_.empty()) evictOldest();
}

void FolderDescriptors::evictOldest() {
  Slot& slot = *idle_.front();
  slot.identity_ = folderIdentity(slot.descriptor_.get());
  slot.wasClosed_ = true;
  idle_.pop_front();
  const UniqueDescriptor closing = std::move(slot.descriptor_);
}

}  // namespace dunmere
