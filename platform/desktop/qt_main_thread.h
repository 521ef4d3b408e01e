// QtMainThread: runs posted work in the event loop of the thread that made it.
#pragma once

#include <functional>
#include <memory>

#include "engine/thread_annotations.h"
#include "sweeper/main_thread.h"

class QObject;

namespace dunmere {

/// Make it on the main thread, beside the application object; it must outlive every scan.
class QtMainThread : public MainThread {
 public:
  QtMainThread();
  ~QtMainThread() override;
  QtMainThread(const QtMainThread&) = delete;
  QtMainThread& operator=(const QtMainThread&) = delete;

  void post(std::function<void()> work) override;

  /// Drops all work that is still queued and all that is posted from now on. Called on the main thread when the event
  /// loop has ended; scans may go on posting.
  void closeForQuit();

 private:
  Mutex mutex_;
  std::unique_ptr<QObject> receiver_ GUARDED_BY(mutex_);  // none once closed
};

}  // namespace dunmere
