#include "sweeper/link_looks.h"

#include <chrono>
#include <utility>

#include "sweeper/memory_retry.h"

namespace dunmere {

LinkLooks::LinkLooks(Background& background, std::string folder, std::function<void()> late)
    : background_(background), folderPath_(std::move(folder)), late_(std::move(late)) {}

ColumnListing::LinkTargets LinkLooks::look(const std::shared_ptr<OpenFolder>& folder,
                                           const std::vector<std::string>& names, bool onlyNew) {
  {
    const std::lock_guard lock(mutex_);
    if (isClosed_) return {};
    for (const std::string& name : names) {
      const bool isNew = known_.insert(name).second;
      if ((isNew || !onlyNew) && asked_.insert(name).second) waiting_.push_back(name);
    }
    if (!waiting_.empty()) folder_ = folder;
    isAwaited_ = true;
  }
  startThreads();
  std::unique_lock lock(mutex_);
  found_.wait_for(lock, background_.moment() / 2, [this] { return asked_.empty(); });
  isAwaited_ = false;
  return std::exchange(targets_, {});
}

void LinkLooks::close() {
  const std::lock_guard lock(mutex_);
  isClosed_ = true;
  waiting_.clear();
  folder_.reset();
}

void LinkLooks::startThreads() {
  for (std::size_t number = 0; number < kMostThreads; ++number) {
    {
      const std::lock_guard lock(mutex_);
      if (waiting_.empty()) return;
      if (!threads_.insert(number).second) continue;
    }
    const auto walk = [looks = shared_from_this(), number] {
      looks->walk();
      const std::lock_guard lock(looks->mutex_);
      looks->threads_.erase(number);
    };
    background_.run("links " + std::to_string(number) + " of " + folderPath_, walk);
  }
}

void LinkLooks::walk() {
  std::unique_lock lock(mutex_);
  const bool hasWork = !waiting_.empty();
  while (!waiting_.empty()) {
    const std::string name = std::move(waiting_.front());
    waiting_.pop_front();
    const std::shared_ptr<OpenFolder> folder = folder_;
    lock.unlock();
    LinkTarget target;
    untilMemoryAllows([&] { target = folder->resolveLink(name); });
    lock.lock();
    asked_.erase(name);
    untilMemoryAllows([&] { targets_.emplace_back(name, target); });
  }
  folder_.reset();
  found_.notify_all();
  const bool isLate = hasWork && !isAwaited_ && !isClosed_ && !targets_.empty();
  lock.unlock();
  if (isLate) untilMemoryAllows(late_);
}

}  // namespace dunmere
