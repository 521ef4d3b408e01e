// SnapshotMailbox: carries work from scan threads to a pane that may be gone by the time it arrives.
#pragma once

#include <functional>
#include <memory>

#include "engine/thread_annotations.h"
#include "sweeper/main_thread.h"

namespace dunmere {

/// Owned jointly by a pane and its scans. deliver() is called on any scan thread, several at a time; close() on the
/// main thread. A delivery ends when its work has run on the main thread or the mailbox is closed, whichever comes
/// first; after close() returns no work of this mailbox runs any more.
class SnapshotMailbox : public std::enable_shared_from_this<SnapshotMailbox> {
 public:
  explicit SnapshotMailbox(MainThread& mainThread) : mainThread_(mainThread) {}

  /// Has `work` run on the main thread and waits for it; drops it when the mailbox is or gets closed.
  void deliver(std::function<void()> work);

  /// Ends every waiting delivery and refuses new ones.
  void close();

  /// Any thread.
  bool isClosed() const;

 private:
  struct Parcel;

  /// Runs a parcel's work on the main thread, unless the mailbox was closed while it was under way.
  void open(Parcel& parcel);

  MainThread& mainThread_;
  mutable Mutex mutex_;
  Condition ended_;
  bool isClosed_ GUARDED_BY(mutex_) = false;
};

}  // namespace dunmere
