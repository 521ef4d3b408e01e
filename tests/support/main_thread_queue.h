// MainThreadQueue: a main thread that the test steps by hand.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "sweeper/main_thread.h"

namespace dunmere::test {

/// The thread that calls the run functions plays the main thread.
class MainThreadQueue : public MainThread {
 public:
  void post(std::function<void()> work) override;

  /// Runs the work that is queued now; returns how many.
  std::size_t runQueued();
  /// Waits for the next work and runs it; false when none came in time.
  bool runNext(std::chrono::seconds atMost = std::chrono::seconds(20));
  /// Runs work as it comes until `done()` is true; false when it did not become so in time.
  bool runUntil(const std::function<bool()>& done, std::chrono::seconds atMost = std::chrono::seconds(20));

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> queue_;
};

}  // namespace dunmere::test
