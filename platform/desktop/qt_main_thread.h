// QtMainThread: runs posted work in the event loop of the thread that made it.
#pragma once

#include <QMetaObject>
#include <QObject>
#include <functional>
#include <memory>
#include <utility>

#include "engine/thread_annotations.h"
#include "sweeper/main_thread.h"

namespace dunmere {

/// Make it on the main thread, beside the application object; it must outlive every scan.
class QtMainThread : public MainThread {
 public:
  QtMainThread() = default;
  ~QtMainThread() override { closeForQuit(); }
  QtMainThread(const QtMainThread&) = delete;
  QtMainThread& operator=(const QtMainThread&) = delete;

  void post(std::function<void()> work) override {
    const MutexLock lock(mutex_);
    if (receiver_) QMetaObject::invokeMethod(receiver_.get(), std::move(work), Qt::QueuedConnection);
  }

  /// Drops all work that is still queued and all that is posted from now on. Called on the main thread when the event
  /// loop has ended; scans may go on posting.
  void closeForQuit() {
    std::unique_ptr<QObject> receiver;  // goes last, without the lock: what its queued work owns may call post()
    const MutexLock lock(mutex_);
    receiver.swap(receiver_);
  }

 private:
  Mutex mutex_;
  std::unique_ptr<QObject> receiver_ GUARDED_BY(mutex_) = std::make_unique<QObject>();  // none once closed
};

}  // namespace dunmere
