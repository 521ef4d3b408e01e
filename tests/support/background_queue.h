// BackgroundQueue: a background that the test steps by hand.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "sweeper/background.h"

namespace dunmere::test {

/// At first every work is done at once, by whoever asks for it: a disk that answers promptly. Once it is held, work
/// waits until the test runs it. Delays are not waited for; only the sizes that do not wait for a slow disk come after
/// a prompt one has answered.
class BackgroundQueue : public Background {
 public:
  void run(const std::string& place, std::function<void()> work, Delay = Delay(0)) override {
    {
      const std::lock_guard lock(mutex_);
      if (isHeld_) {
        waiting_.emplace_back(place, std::move(work));
        return;
      }
      if (place.starts_with("sizes of ")) {
        waiting_.emplace_back(place, std::move(work));
        return;
      }
    }
    ++depth_;
    work();
    if (--depth_ == 0 && !isHeld()) release();
  }

  std::chrono::milliseconds moment() const override { return std::chrono::milliseconds(0); }

  void hold() {
    const std::lock_guard lock(mutex_);
    isHeld_ = true;
  }
  /// Does all that waits, and all further work at once.
  void release() {
    {
      const std::lock_guard lock(mutex_);
      isHeld_ = false;
    }
    while (runNext()) continue;
  }

  std::size_t waiting() {
    const std::lock_guard lock(mutex_);
    return waiting_.size();
  }
  /// Does the work that waits at `index`; false when there is none.
  bool runNext(std::size_t index = 0) {
    std::function<void()> work;
    {
      const std::lock_guard lock(mutex_);
      if (index >= waiting_.size()) return false;
      work = std::move(waiting_[index].second);
      waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(index));
    }
    work();
    return true;
  }
  /// Does the work about `place` that waits longest; false when there is none.
  bool runPlace(const std::string& place) {
    std::size_t index = 0;
    {
      const std::lock_guard lock(mutex_);
      while (index < waiting_.size() && waiting_[index].first != place) ++index;
    }
    return runNext(index);
  }

 private:
  bool isHeld() {
    const std::lock_guard lock(mutex_);
    return isHeld_;
  }

  std::mutex mutex_;
  bool isHeld_ = false;
  std::deque<std::pair<std::string, std::function<void()>>> waiting_;
  std::atomic<int> depth_ = 0;  // of works in works
};

}  // namespace dunmere::test
