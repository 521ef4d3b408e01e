#include "tests/sweeper/pane_test.h"

#include <algorithm>
#include <chrono>
#include <deque>

namespace dunmere::test {

World::World() {
  fileSystem.onOpen([this](const std::string& path) { folderOpens(path); });
}

void World::folderOpens(const std::string& path) {
  if (std::this_thread::get_id() == mainThread_) {
    listings_.push_back(path);
    return;
  }
  std::unique_lock lock(mutex_);
  released_.wait(lock, [&] { return heldPath_ != path; });
  ++scanOpenings_;
}

void World::holdScansAt(const std::string& path) {
  const std::lock_guard lock(mutex_);
  heldPath_ = path;
}

void World::releaseScans() {
  const std::lock_guard lock(mutex_);
  heldPath_.clear();
  released_.notify_all();
}

World& newWorld() {
  static auto& worlds = *new std::deque<World>;
  return worlds.emplace_back();
}

PaneTest::PaneTest() : pane_(makePane()) {
  // Every counted file is due for a snapshot.
  fileSystem_.setClockStep(std::chrono::milliseconds(350));
}

PaneTest::~PaneTest() {
  world_.releaseScans();
}

std::unique_ptr<DiskSweeperPane> PaneTest::makePane() {
  World& world = world_;
  // Without readers all that stands before the folder that is held has been counted when a scan gets there.
  auto pane =
      std::make_unique<DiskSweeperPane>(fileSystem_, desktop_, mainThread_, background_,
                                        BoolBinding{[&world] { return world.pendingGoToDrives; },
                                                    [&world](bool raised) { world.pendingGoToDrives = raised; }},
                                        ScanOptions{.readers = 0});
  pane->setListener([&world] { ++world.notifications; });
  return pane;
}

void PaneTest::sweep(const std::string& path) {
  pane().beginBrowsing(FileUrl(path));
  runUntilComplete();
}

void PaneTest::runUntilComplete() {
  ASSERT_TRUE(mainThread_.runUntil([this] { return pane().inventory() && pane().inventory()->scanComplete; }));
}

void PaneTest::runUntilCounted(std::int64_t files) {
  ASSERT_TRUE(mainThread_.runUntil([this, files] { return pane().scanFileCount() == files; }));
}

SweeperItem PaneTest::row(std::size_t column, const std::string& name) const {
  const auto rows = pane().columnChildren().at(column).items();
  const auto found = std::ranges::find(rows, name, &SweeperItem::name);
  if (found != rows.end()) return *found;
  ADD_FAILURE() << "no row " << name << " in column " << column;
  return {};
}

std::vector<std::string> PaneTest::names(std::size_t column) const {
  std::vector<std::string> names;
  std::ranges::transform(pane().columnChildren().at(column).items(), std::back_inserter(names), &SweeperItem::name);
  return names;
}

std::vector<FileUrl> urls(const std::vector<std::string>& paths) {
  return {paths.begin(), paths.end()};
}

VolumeValues volumeOf(const std::string& name, std::int64_t totalBytes, std::int64_t freeBytes) {
  VolumeValues values;
  values.name = name;
  values.totalBytes = totalBytes;
  values.availableBytes = freeBytes;
  return values;
}

}  // namespace dunmere::test
