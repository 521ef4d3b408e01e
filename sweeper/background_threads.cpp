#include "sweeper/background_threads.h"

#include <algorithm>
#include <chrono>
#include <list>
#include <map>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/thread_annotations.h"

namespace dunmere {

namespace {

using Clock = std::chrono::steady_clock;

/// How long a thread waits for work before it ends; one is kept.
constexpr std::chrono::seconds kIdle{1};

struct Work {
  std::string place;
  std::string folder;  // that the place lies in
  std::function<void()> run;
  Clock::time_point due;
};

std::string folderOf(const std::string& place) {
  return place.substr(0, std::max<std::size_t>(place.rfind('/'), 1));
}

}  // namespace

/// What threads share.
struct BackgroundThreads::Shared {
  struct Place {
    std::size_t waiting = 0;
    bool isBusy = false;  // somebody is at work for it
  };

  struct Folder {
    std::size_t waiting = 0;  // places in it for which works wait and nobody is busy
    std::size_t busy = 0;

    bool isFull() const { return busy >= kMostInOneFolder; }
    std::size_t placesToBegin() const { return std::min(waiting, kMostInOneFolder - busy); }
  };

  Mutex mutex;
  Condition changed;
  std::list<Work> waiting GUARDED_BY(mutex);                // in the order of the calls
  std::map<std::string, Place> places GUARDED_BY(mutex);    // with works that wait or are done
  std::map<std::string, Folder> folders GUARDED_BY(mutex);  // with such places
  std::size_t placesToBegin GUARDED_BY(mutex) = 0;
  std::size_t threads GUARDED_BY(mutex) = 0;
  std::size_t working GUARDED_BY(mutex) = 0;
  bool isClosing GUARDED_BY(mutex) = false;

  void add(Work work) REQUIRES(mutex) {
    // All that may throw comes first.
    Place& place = places[work.place];
    folders.try_emplace(work.folder);
    waiting.push_back(std::move(work));
    if (++place.waiting == 1 && !place.isBusy) count(waiting.back().folder, 1, 0);
  }

  /// So many more places in the folder, which is there, wait, and so many more are busy.
  void count(const std::string& name, int moreWaiting, int moreBusy) REQUIRES(mutex) {
    Folder& folder = folders.at(name);
    placesToBegin -= folder.placesToBegin();
    folder.waiting += static_cast<std::size_t>(moreWaiting);
    folder.busy += static_cast<std::size_t>(moreBusy);
    placesToBegin += folder.placesToBegin();
    if (folder.waiting + folder.busy == 0) folders.erase(name);
  }

  /// The first work that may begin now; else, when one will be due, the time in `next`.
  std::optional<Work> take(std::optional<Clock::time_point>& next) REQUIRES(mutex) {
    const auto now = Clock::now();
    for (auto work = waiting.begin(); work != waiting.end(); ++work) {
      Place& place = places.at(work->place);
      if (place.isBusy || folders.at(work->folder).isFull()) continue;
      if (work->due <= now) {
        place.isBusy = true;
        --place.waiting;
        count(work->folder, -1, 1);
        Work taken = std::move(*work);
        waiting.erase(work);
        return taken;
      }
      next = next ? std::min(*next, work->due) : work->due;
    }
    return std::nullopt;
  }

  void serve() {
    const MutexLock lock(mutex);
    while (!isClosing) {
      std::optional<Clock::time_point> next;
      if (auto work = take(next)) {
        finish(*work);
      } else if (next) {
        changed.waitUntil(mutex, *next);
      } else if (free() == 1) {
        changed.wait(mutex);
      } else if (!changed.waitUntil(mutex, Clock::now() + kIdle) && free() > 1) {
        break;
      }
    }
    --threads;
  }

  /// Threads that are not at work, whether they wait or have yet to begin.
  std::size_t free() const REQUIRES(mutex) { return threads - working; }

  void finish(Work& work) REQUIRES(mutex) {
    ++working;
    mutex.unlock();
    work.run();
    work.run = nullptr;  // what it owns may take time to go
    mutex.lock();
    --working;
    const auto place = places.find(work.place);
    place->second.isBusy = false;
    const bool isWaiting = place->second.waiting > 0;
    count(work.folder, isWaiting ? 1 : 0, -1);
    if (!isWaiting) places.erase(place);
    changed.notifyAll();  // others may wait for the place
  }

  /// Throws when it is refused.
  static void startThread(const std::shared_ptr<Shared>& shared) REQUIRES(shared->mutex) {
    std::thread([shared] { shared->serve(); }).detach();
    ++shared->threads;
  }
};

BackgroundThreads::BackgroundThreads() : shared_(std::make_shared<Shared>()) {
  const MutexLock lock(shared_->mutex);
  Shared::startThread(shared_);
}

BackgroundThreads::~BackgroundThreads() {
  std::list<Work> dropped;
  const MutexLock lock(shared_->mutex);
  shared_->isClosing = true;
  dropped.swap(shared_->waiting);
  shared_->changed.notifyAll();
}

void BackgroundThreads::run(const std::string& place, std::function<void()> work, Delay delay) {
  const MutexLock lock(shared_->mutex);
  shared_->add({place, folderOf(place), std::move(work), Clock::now() + delay});
  shared_->changed.notifyOne();
  if (shared_->free() >= shared_->placesToBegin || shared_->threads >= kMostThreads) return;
  try {
    Shared::startThread(shared_);
  } catch (const std::exception&) {
    // Refused for want of memory or threads: the work waits for a thread that is there.
  }
}

std::size_t BackgroundThreads::threadCount() const {
  const MutexLock lock(shared_->mutex);
  return shared_->threads;
}

}  // namespace dunmere
