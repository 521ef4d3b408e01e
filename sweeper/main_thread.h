// MainThread: runs work on the interface's thread.
#pragma once

#include <functional>

namespace dunmere {

/// Implementations are thread-safe and outlive every scan.
class MainThread {
 public:
  virtual ~MainThread() = default;

  /// Queues `work` to run once on the main thread, in the order of the calls; returns at once. Called from any thread.
  /// When the application is quitting, the work may be dropped.
  virtual void post(std::function<void()> work) = 0;
};

}  // namespace dunmere
