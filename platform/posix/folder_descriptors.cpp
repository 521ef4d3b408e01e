#include "platform/posix/folder_descriptors.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>

namespace dunmere {
namespace {

std::optional<FolderIdentity> identityOf(int folder) {
#ifdef STATX_INO
  // The inode number never changes while the folder is open, so no server need be asked.
  struct statx status{};
  if (::statx(folder, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_INO, &status) != 0) return std::nullopt;
  return FolderIdentity{(std::uint64_t{status.stx_dev_major} << 32) | status.stx_dev_minor, status.stx_ino};
#else
  struct stat status{};
  if (::fstat(folder, &status) != 0) return std::nullopt;
  return FolderIdentity{static_cast<std::uint64_t>(status.st_dev), status.st_ino};
#endif
}

}  // namespace

std::size_t FolderDescriptors::budgetOfProcess() {
  constexpr rlim_t kLeast = 8;
  constexpr rlim_t kMost = 512;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return kLeast;
  return std::clamp<rlim_t>(limit.rlim_cur / 2, kLeast, kMost);
}

void FolderDescriptors::keep(Slot& slot, UniqueDescriptor opened) {
  UniqueDescriptor closing;
  const MutexLock lock(mutex_);
  insert(slot, pinned_, std::move(opened));
  slot.pins_ = 1;
  closing = takeIdleBeyond(budget_);
}

std::expected<FolderDescriptors::Pin, int> FolderDescriptors::adopt(Slot& slot, UniqueDescriptor opened) {
  UniqueDescriptor closing;
  const MutexLock lock(mutex_);
  if (slot.descriptor_) return pinLocked(slot);
  if (slot.wasClosed_) {
    const auto identity = identityOf(opened.get());
    if (!identity || identity != slot.identity_) return std::unexpected(ESTALE);
  }
  insert(slot, idle_, std::move(opened));
  Pin pin = pinLocked(slot);
  closing = takeIdleBeyond(budget_);
  return pin;
}

FolderDescriptors::Pin FolderDescriptors::pin(Slot& slot) {
  const MutexLock lock(mutex_);
  return slot.descriptor_ ? pinLocked(slot) : Pin();
}

void FolderDescriptors::closeIdle() {
  const auto take = [this] {
    const MutexLock lock(mutex_);
    return takeIdleBeyond(0);
  };
  while (take()) continue;
}

void FolderDescriptors::release(Slot& slot) {
  UniqueDescriptor closing;
  const MutexLock lock(mutex_);
  if (--slot.pins_ > 0) return;
  idle_.splice(idle_.end(), pinned_, slot.listed_);
  closing = takeIdleBeyond(budget_);
}

void FolderDescriptors::forget(Slot& slot) {
  UniqueDescriptor closing;
  const MutexLock lock(mutex_);
  if (!slot.descriptor_) return;
  (slot.pins_ > 0 ? pinned_ : idle_).erase(slot.listed_);
  closing = std::move(slot.descriptor_);
}

void FolderDescriptors::insert(Slot& slot, std::list<Slot*>& list, UniqueDescriptor opened) {
  // The list first: it may run out of memory, and every slot with a descriptor is listed.
  slot.listed_ = list.insert(list.end(), &slot);
  slot.descriptor_ = std::move(opened);
  ++slot.generation_;
}

FolderDescriptors::Pin FolderDescriptors::pinLocked(Slot& slot) {
  if (slot.pins_++ == 0) pinned_.splice(pinned_.end(), idle_, slot.listed_);
  return Pin(slot);
}

/// The least recently used idle descriptor, when more than `count` are open in all.
UniqueDescriptor FolderDescriptors::takeIdleBeyond(std::size_t count) {
  if (idle_.empty() || idle_.size() + pinned_.size() <= count) return {};
  Slot& slot = *idle_.front();
  idle_.pop_front();
  slot.identity_ = identityOf(slot.descriptor_.get());
  slot.wasClosed_ = true;
  return std::move(slot.descriptor_);
}

}  // namespace dunmere
