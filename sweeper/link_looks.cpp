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
    const MutexLock lock(mutex_);
    if (isClosed_) return {};
    folder_ = folder;  // before any name waits: memory may run out in between
    for (const std::string& name : names) {
      if (asked_.contains(name) || (onlyNew && known_.contains(name))) continue;
      waiting_.push_back(name);
      asked_.insert(name);
      known_.insert(name);
    }
    if (waiting_.empty()) folder_.reset();
    isAwaited_ = true;
  }
  startThreads(kUsualThreads);
  callHelp();
  const auto deadline = std::chrono::steady_clock::now() + background_.moment() / 2;
  const MutexLock lock(mutex_);
  while (!asked_.empty() && found_.waitUntil(mutex_, deadline)) continue;
  isAwaited_ = false;
  return std::exchange(targets_, {});
}

void LinkLooks::close() {
  const MutexLock lock(mutex_);
  isClosed_ = true;
  waiting_.clear();
  folder_.reset();
}

/// Has more threads help, if links still wait when these may be stuck.
void LinkLooks::callHelp() {
  constexpr Background::Delay kPatience = std::chrono::seconds(1);
  {
    const MutexLock lock(mutex_);
    if (waiting_.empty() || std::exchange(isHelpCalled_, true)) return;
  }
  const auto help = [looks = shared_from_this()] {
    {
      const MutexLock lock(looks->mutex_);
      looks->isHelpCalled_ = false;
    }
    untilMemoryAllows([&] { looks->startThreads(kMostThreads); });
  };
  background_.run("links of " + folderPath_, help, kPatience);
}

void LinkLooks::startThreads(std::size_t atMost) {
  for (std::size_t number = 0; number < atMost; ++number) {
    {
      const MutexLock lock(mutex_);
      if (waiting_.empty()) return;
      if (!threads_.insert(number).second) continue;
    }
    const auto walk = [looks = shared_from_this(), number] {
      looks->walk();
      const MutexLock lock(looks->mutex_);
      looks->threads_.erase(number);
    };
    background_.run("links " + std::to_string(number) + " of " + folderPath_, walk);
  }
}

void LinkLooks::walk() {
  bool hasLooked = false;
  while (const auto look = takeLook()) {
    LinkTarget target;
    untilMemoryAllows([&] { target = look->folder->resolveLink(look->name); });
    untilMemoryAllows([&] { keepTarget(look->name, target); });
    hasLooked = true;
  }
  if (hasLooked && isLate()) untilMemoryAllows(late_);
}

std::optional<LinkLooks::Look> LinkLooks::takeLook() {
  const MutexLock lock(mutex_);
  if (waiting_.empty()) {
    folder_.reset();
    return std::nullopt;
  }
  Look look{folder_, std::move(waiting_.front())};
  waiting_.pop_front();
  return look;
}

void LinkLooks::keepTarget(const std::string& name, const LinkTarget& target) {
  const MutexLock lock(mutex_);
  targets_.emplace_back(name, target);
  asked_.erase(name);
  if (asked_.empty()) found_.notifyAll();
}

bool LinkLooks::isLate() {
  const MutexLock lock(mutex_);
  return !isAwaited_ && !isClosed_ && !targets_.empty();
}

}  // namespace dunmere
