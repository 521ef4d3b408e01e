// PaneTest: a pane over a file system in memory, with real scans and a main thread that the test steps.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "sweeper/disk_sweeper_pane.h"
#include "tests/support/background_queue.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {

/// Everything around a pane.
class World {
 public:
  World();

  /// Makes every scan wait before it opens the folder at `path`, until releaseScans().
  void holdScansAt(const std::string& path);
  void releaseScans();

  /// Folders listed on the main thread so far, in order.
  const std::vector<std::string>& listings() const { return listings_; }
  /// Folders opened by scans so far.
  int scanOpenings() const { return scanOpenings_; }

  MemoryFileSystem fileSystem;
  MainThreadQueue mainThread;
  BackgroundQueue background;  ///< at first answers at once
  FakeDesktop desktop;
  bool pendingGoToDrives = false;
  int notifications = 0;  ///< calls of the pane's listener

 private:
  void folderOpens(const std::string& path);

  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::vector<std::string> listings_;
  std::atomic<int> scanOpenings_ = 0;
  std::mutex mutex_;
  std::condition_variable released_;
  std::string heldPath_;  // under mutex_; empty: scans run freely
};

/// A new world, never destroyed: scans cannot be cancelled, and one may outlive the test that started it.
World& newWorld();

class PaneTest : public ::testing::Test {
 protected:
  PaneTest();
  ~PaneTest() override;

  std::unique_ptr<DiskSweeperPane> makePane();

  /// Sweeps `path` to its end.
  void sweep(const std::string& path);
  void runUntilComplete();
  void runUntilCounted(std::int64_t files);

  /// A copy of the row of that name; the test fails when the column has none.
  SweeperItem row(std::size_t column, const std::string& name) const;
  std::vector<std::string> names(std::size_t column) const;
  void click(std::size_t column, const std::string& name) { pane().selectItem(row(column, name), column); }

  /// Every readable field; inventories, which have no equality, by their counts.
  auto state() const {
    const auto& inventory = pane().inventory();
    return std::tuple(pane().pendingGoToDrives(), pane().volumes(), pane().selectedVolumeID(), pane().phase(),
                      pane().sweepRoot(), inventory ? std::optional(inventory->fileCount) : std::nullopt,
                      pane().pathDirectories(), pane().selectedLeafURL(), pane().columnChildren(),
                      pane().columnLoadIDs(), pane().loadError(), pane().scanStatus(), pane().scanFileCount(),
                      pane().scanBytesSoFar(), pane().confirmTrash());
  }

  DiskSweeperPane& pane() { return *pane_; }
  const DiskSweeperPane& pane() const { return *pane_; }

  World& world_ = newWorld();
  MemoryFileSystem& fileSystem_ = world_.fileSystem;
  MainThreadQueue& mainThread_ = world_.mainThread;
  BackgroundQueue& background_ = world_.background;
  FakeDesktop& desktop_ = world_.desktop;
  std::unique_ptr<DiskSweeperPane> pane_;
};

std::vector<FileUrl> urls(const std::vector<std::string>& paths);

/// The values of an ordinary volume.
VolumeValues volumeOf(const std::string& name, std::int64_t totalBytes, std::int64_t freeBytes);

}  // namespace dunmere::test
