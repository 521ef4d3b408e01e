#include "sweeper/snapshot_mailbox.h"

#include <utility>

namespace dunmere {

/// One delivery, owned by the waiting scan thread and by the queue of the main thread: either may be done with it
/// first.
struct SnapshotMailbox::Parcel {
  std::function<void()> work;
  bool delivered = false;  ///< under the mailbox's mutex
};

void SnapshotMailbox::deliver(std::function<void()> work) {
  const auto parcel = std::make_shared<Parcel>(Parcel{std::move(work)});
  if (isClosed()) return;
  mainThread_.post([mailbox = shared_from_this(), parcel] { mailbox->open(*parcel); });
  std::unique_lock lock(mutex_);
  ended_.wait(lock, [&] { return parcel->delivered || closed_; });
}

void SnapshotMailbox::close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  ended_.notify_all();
}

bool SnapshotMailbox::isClosed() const {
  const std::lock_guard lock(mutex_);
  return closed_;
}

void SnapshotMailbox::open(Parcel& parcel) {
  // close() is called on this same thread, so the mailbox cannot close between this look and the work.
  if (isClosed()) return;
  parcel.work();
  const std::lock_guard lock(mutex_);
  parcel.delivered = true;
  ended_.notify_all();
}

}  // namespace dunmere
