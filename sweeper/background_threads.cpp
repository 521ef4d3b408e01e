#include "sweeper/background_threads.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace dunmere {

namespace {

using Clock = std::chrono::steady_clock;

/// How long a thread waits for work before it ends; one is kept.
constexpr std::chrono::seconds kIdle{1};

struct Work {
  std::string place;
  std::function<void()> run;
  Clock::time_point due;
};

}  // namespace

/// What threads share. Everything is under the mutex.
struct BackgroundThreads::Shared {
  struct Place {
    std::size_t waiting = 0;
    bool isBusy = false;  // somebody is at work for it
  };

  mutable std::mutex mutex;
  std::condition_variable changed;
  std::list<Work> waiting;              // in the order of the calls
  std::map<std::string, Place> places;  // with works that wait or are done
  std::size_t placesToBegin = 0;        // where works wait and nobody is busy
  std::size_t threads = 0;
  std::size_t working = 0;
  bool isClosing = false;

  void add(Work work) {
    Place& place = places[work.place];
    waiting.push_back(std::move(work));
    if (++place.waiting == 1 && !place.isBusy) ++placesToBegin;
  }

  /// The first work that may begin now; else, when one will be due, the time in `next`.
  std::optional<Work> take(std::optional<Clock::time_point>& next) {
    const auto now = Clock::now();
    for (auto work = waiting.begin(); work != waiting.end(); ++work) {
      Place& place = places.at(work->place);
      if (place.isBusy) continue;
      if (work->due <= now) {
        place.isBusy = true;
        --place.waiting;
        --placesToBegin;
        Work taken = std::move(*work);
        waiting.erase(work);
        return taken;
      }
      next = next ? std::min(*next, work->due) : work->due;
    }
    return std::nullopt;
  }

  void serve() {
    std::unique_lock lock(mutex);
    while (!isClosing) {
      std::optional<Clock::time_point> next;
      if (auto work = take(next)) {
        finish(*work, lock);
      } else if (next) {
        changed.wait_until(lock, *next);
      } else if (free() == 1) {
        changed.wait(lock);
      } else if (changed.wait_for(lock, kIdle) == std::cv_status::timeout && waiting.empty() && free() > 1) {
        break;
      }
    }
    --threads;
  }

  /// Threads that are not at work, whether they wait or have yet to begin.
  std::size_t free() const { return threads - working; }

  void finish(Work& work, std::unique_lock<std::mutex>& lock) {
    ++working;
    lock.unlock();
    work.run();
    work.run = nullptr;  // what it owns may take time to go
    lock.lock();
    --working;
    const auto place = places.find(work.place);
    place->second.isBusy = false;
    if (place->second.waiting > 0) {
      ++placesToBegin;
    } else {
      places.erase(place);
    }
    changed.notify_all();  // others may wait for the place
  }
};

BackgroundThreads::BackgroundThreads() : shared_(std::make_shared<Shared>()) {
  const std::lock_guard lock(shared_->mutex);
  startThread(shared_);
}

BackgroundThreads::~BackgroundThreads() {
  std::list<Work> dropped;
  const std::lock_guard lock(shared_->mutex);
  shared_->isClosing = true;
  dropped.swap(shared_->waiting);
  shared_->changed.notify_all();
}

/// Called under the lock.
void BackgroundThreads::startThread(const std::shared_ptr<Shared>& shared) {
  std::thread([shared] { shared->serve(); }).detach();
  ++shared->threads;
}

void BackgroundThreads::run(const std::string& place, std::function<void()> work, Delay delay) {
  const std::lock_guard lock(shared_->mutex);
  shared_->add({place, std::move(work), Clock::now() + delay});
  shared_->changed.notify_one();
  if (shared_->free() >= shared_->placesToBegin || shared_->threads >= kMostThreads) return;
  try {
    startThread(shared_);
  } catch (const std::exception&) {
    // Refused for want of memory or threads: the work waits for a thread that is there.
  }
}

std::size_t BackgroundThreads::threadCount() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->threads;
}

}  // namespace dunmere
