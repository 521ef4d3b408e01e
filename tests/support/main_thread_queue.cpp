#include "tests/support/main_thread_queue.h"

#include <utility>

namespace dunmere::test {

void MainThreadQueue::post(std::function<void()> work) {
  // Told under the lock: once the work has run, nobody may look at this queue any more, and it may go.
  const std::lock_guard lock(mutex_);
  queue_.push_back(std::move(work));
  posted_.notify_one();
}

std::size_t MainThreadQueue::runQueued() {
  std::deque<std::function<void()>> queued;
  {
    const std::lock_guard lock(mutex_);
    queued.swap(queue_);
  }
  for (const auto& work : queued) work();
  return queued.size();
}

bool MainThreadQueue::runNext(std::chrono::seconds atMost) {
  std::function<void()> work;
  {
    std::unique_lock lock(mutex_);
    if (!posted_.wait_for(lock, atMost, [this] { return !queue_.empty(); })) return false;
    work = std::move(queue_.front());
    queue_.pop_front();
  }
  work();
  return true;
}

bool MainThreadQueue::runUntil(const std::function<bool()>& done, std::chrono::seconds atMost) {
  const auto deadline = std::chrono::steady_clock::now() + atMost;
  while (!done()) {
    std::function<void()> work;
    {
      std::unique_lock lock(mutex_);
      // In slices: what done() looks at may change without any work being posted.
      posted_.wait_for(lock, std::chrono::milliseconds(10), [this] { return !queue_.empty(); });
      if (!queue_.empty()) {
        work = std::move(queue_.front());
        queue_.pop_front();
      }
    }
    if (work) work();
    if (std::chrono::steady_clock::now() >= deadline) return done();
  }
  return true;
}

}  // namespace dunmere::test
