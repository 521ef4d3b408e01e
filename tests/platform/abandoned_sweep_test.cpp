// Sweeps of real folders that nobody waits for any more: panes closed, thrown away and sent back to the drives at any
// moment. In the end nothing of them is left.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/platform_file_system.h"
#include "sweeper/background_threads.h"
#include "sweeper/disk_sweeper_pane.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

/// The real file system with one volume, a gate that scans can be held at, and a clock that moves on by a step whenever
/// it is asked: at first so far that every file is due for a snapshot.
class HurriedFileSystem : public FileSystem {
 public:
  explicit HurriedFileSystem(const FileUrl& volume) : volume_(volume) {}

  void holdScans() { setHeld(true); }
  void releaseScans() { setHeld(false); }
  void setClockStep(Instant step) { clockStep_ = step.count(); }

  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override {
    if (detail == EntryDetail::sizes) passGate();
    return real_->openFolder(url, detail);
  }
  std::optional<std::vector<VolumeMount>> mountedVolumes() override { return {{{volume_, "volume", {}}}}; }
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl&) override {
    VolumeValues values;
    values.name = "volume";
    values.totalBytes = 2'000'000;
    values.availableBytes = 1'000'000;
    return values;
  }
  FileUrl homeFolder() override { return volume_; }
  Instant now() override { return Instant(clock_ += clockStep_); }
  std::string nameSortKey(std::string_view name) override { return real_->nameSortKey(name); }
  void enterUtilityPriority() noexcept override {}  // it would starve the scans on a busy machine

 private:
  void setHeld(bool held) {
    const std::lock_guard lock(mutex_);
    held_ = held;
    released_.notify_all();
  }
  void passGate() {
    std::unique_lock lock(mutex_);
    released_.wait(lock, [this] { return !held_; });
  }

  FileUrl volume_;
  std::unique_ptr<FileSystem> real_ = makePlatformFileSystem();
  std::atomic<Instant::rep> clock_ = 0;
  std::atomic<Instant::rep> clockStep_ = Instant(std::chrono::milliseconds(350)).count();
  std::mutex mutex_;
  std::condition_variable released_;
  bool held_ = false;
};

std::ptrdiff_t entriesOf(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

/// What a process holds.
struct Holdings {
  std::ptrdiff_t threads = entriesOf("/proc/self/task");
  std::ptrdiff_t descriptors = entriesOf("/proc/self/fd");
  std::size_t allocatedBytes = mallinfo2().uordblks + mallinfo2().hblkhd;
};

class AbandonedSweeps : public ::testing::Test {
 protected:
  struct World {
    explicit World(const FileUrl& root) : fileSystem(root) {}
    HurriedFileSystem fileSystem;
    FakeDesktop desktop;
    MainThreadQueue mainThread;
    BackgroundThreads background;
    bool pendingGoToDrives = false;
  };

  /// Never destroyed: a scan that a failed test leaves behind may go on.
  static World& makeWorld(const FileUrl& root) {
    static auto& worlds = *new std::deque<World>();
    return worlds.emplace_back(root);
  }

  AbandonedSweeps() {
    ::mallopt(M_ARENA_MAX, 1);  // or what is allocated would grow with the threads that ever ran at once
    std::thread([] {}).join();  // with the first thread a sanitizer starts one of its own, which stays
    for (int folder = 0; folder < 20; ++folder) {
      for (int file = 0; file < 10; ++file) {
        tree_.folder("d" + std::to_string(folder));
        tree_.file("d" + std::to_string(folder) + "/f" + std::to_string(file));
      }
    }
  }

  void openPane() {
    pane_ = std::make_unique<DiskSweeperPane>(
        world_.fileSystem, world_.desktop, world_.mainThread, world_.background,
        BoolBinding{[this] { return world_.pendingGoToDrives; }, [this](bool on) { world_.pendingGoToDrives = on; }});
    pane_->appear();
  }

  void pressDrives() {
    world_.pendingGoToDrives = true;
    pane_->pendingGoToDrivesChanged();
  }

  int upTo(int most) { return std::uniform_int_distribution(0, most)(random_); }

  void clickSomeRow() {
    if (pane_->columnChildren().empty()) return;
    const std::size_t column = pane_->columnChildren().size() - 1;
    const ColumnRows& rows = pane_->columnChildren()[column];
    if (!rows.empty()) {
      const SweeperItem item = rows[static_cast<std::size_t>(upTo(static_cast<int>(rows.size()) - 1))];
      pane_->selectItem(item, column);
    }
  }

  void sweepSelectedVolume() {
    pane_->selectVolume(tree_.path());
    pane_->startSweepSelectedVolume();
  }

  /// One thing that a user may do, or the main thread on its own.
  void actSomehow() {
    switch (upTo(9)) {
      case 0:
        pane_.reset();
        return openPane();
      case 1:
        return pressDrives();
      case 2:
        return sweepSelectedVolume();
      case 3:
        return pane_->beginBrowsing(tree_.url());
      case 4:
        return clickSomeRow();
      case 5:
        pane_->requestTrash();
        return upTo(1) == 0 ? pane_->dismissTrash() : pane_->confirmedTrash();
      case 6:
        mostThreads_ = std::max(mostThreads_, entriesOf("/proc/self/task"));
        return std::this_thread::sleep_for(std::chrono::microseconds(upTo(500)));
      default:
        world_.mainThread.runQueued();
    }
  }

  void actOften(int actions) {
    openPane();
    for (int i = 0; i < actions; ++i) actSomehow();
    pane_.reset();
  }

  /// Waits until no more threads run than before.
  [[nodiscard]] bool waitForEndOfScans(const Holdings& before) {
    const bool ended = world_.mainThread.runUntil([&] { return entriesOf("/proc/self/task") <= before.threads; },
                                                  std::chrono::seconds(120));
    // Their lists grow with what was done; "= {}" would keep their memory.
    world_.desktop.held = std::vector<FileUrl>();
    world_.desktop.trashed = std::vector<FileUrl>();
    return ended;
  }

  void expectNothingLeftSince(const Holdings& before) {
    constexpr std::size_t kNoise = 64 * 1024;  // the allocator's own caches, and what the last failure text holds
    const Holdings after;
    EXPECT_LE(after.descriptors, before.descriptors);
    EXPECT_LE(after.allocatedBytes, before.allocatedBytes + kNoise);
    std::cout << "allocated before " << before.allocatedBytes << ", after " << after.allocatedBytes << " bytes"
              << std::endl;
  }

  TemporaryTree tree_{fastFolder()};
  World& world_ = makeWorld(tree_.url());
  std::mt19937_64 random_{firstSeed()};
  std::unique_ptr<DiskSweeperPane> pane_;
  std::ptrdiff_t mostThreads_ = 0;
};

TEST_F(AbandonedSweeps, AtAnyMomentThousandsOfTimesLeaveNothingBehind) {
  const Holdings atFirst;
  actOften(500);
  ASSERT_TRUE(waitForEndOfScans(atFirst));
  const Holdings warm;
  actOften(static_cast<int>(rounds(10'000)));
  ASSERT_TRUE(waitForEndOfScans(atFirst));
  EXPECT_GT(mostThreads_, atFirst.threads + 10);  // or there was nothing to abandon
  expectNothingLeftSince(warm);
}

TEST_F(AbandonedSweeps, AHundredAtOnceEndAndLeaveNothingBehind) {
  const Holdings atFirst;
  const auto abandonAHundred = [&] {
    openPane();
    world_.fileSystem.holdScans();
    for (int i = 0; i < 100; ++i) pane_->beginBrowsing(tree_.url());
    EXPECT_GE(entriesOf("/proc/self/task"), atFirst.threads + 100);
    pane_.reset();
    world_.fileSystem.releaseScans();
  };
  abandonAHundred();
  ASSERT_TRUE(waitForEndOfScans(atFirst));
  const Holdings warm;
  abandonAHundred();
  ASSERT_TRUE(waitForEndOfScans(atFirst));
  expectNothingLeftSince(warm);
}

TEST_F(AbandonedSweeps, AHundredInOnePaneAreAllAppliedToTheirEnd) {
  const Holdings atFirst;
  world_.fileSystem.setClockStep(std::chrono::microseconds(100));  // all of the scans ask, so it moves fast enough
  openPane();
  world_.fileSystem.holdScans();
  for (int i = 0; i < 100; ++i) pane_->beginBrowsing(tree_.url());
  world_.fileSystem.releaseScans();
  ASSERT_TRUE(waitForEndOfScans(atFirst));
  ASSERT_TRUE(pane_->inventory());
  EXPECT_TRUE(pane_->inventory()->scanComplete);
  EXPECT_EQ(pane_->scanFileCount(), 200);
}

}  // namespace
}  // namespace dunmere::test
