#include "sweeper/snapshot_mailbox.h"

#include <utility>

namespace dunmere {

/// One delivery, owned by the waiting scan thread and by the queue of the main thread: either may be done with it
/// first.
struct SnapshotMailbox::Parcel {
  std::function<void()> work;
  bool isDelivered = false;  ///< used while the mailbox's mutex is held
};

void SnapshotMailbox::deliver(std::function<void()> work) {
  const auto parcel = std::make_shared<Parcel>(Parcel{std::move(work)});
  if (isClosed()) return;
  mainThread_.post([mailbox = shared_from_this(), parcel] { mailbox->open(*parcel); });
  const MutexLock lock(mutex_);
  while (!parcel->isDelivered && !isClosed_) ended_.wait(mutex_);
}

void SnapshotMailbox::close() {
  const MutexLock lock(mutex_);
  isClosed_ = true;
  ended_.notifyAll();
}

bool SnapshotMailbox::isClosed() const {
  const MutexLock lock(mutex_);
  return isClosed_;
}

void SnapshotMailbox::open(Parcel& parcel) {
  // close() is called on this same thread, so the mailbox cannot close between this look and the work.
  if (isClosed()) return;
  parcel.work();
  const MutexLock lock(mutex_);
  parcel.isDelivered = true;
  ended_.notifyAll();
}

}  // namespace dunmere
