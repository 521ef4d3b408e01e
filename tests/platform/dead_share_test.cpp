// A share that stops answering must not stop the window, nor the quitting; only a scan may wait for it.
#include "tests/support/dead_share.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "platform/trash/trash.h"
#include "sweeper/disk_sweeper_pane.h"
#include "tests/platform/folder_contents.h"
#include "tests/platform/silent_share.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/machine.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

std::ptrdiff_t threads() {
  const std::filesystem::directory_iterator all("/proc/self/task");
  return std::distance(begin(all), end(all));
}

/// A test's own mounts, and what a hanging thread still uses when the test's process ends: never destroyed.
class World {
 public:
  static World& make(const TemporaryTree& tree) { return *new World(tree); }

  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
  FakeDesktop desktop;
  MainThreadQueue mainThread;
  DeadShare share;

  auto column(const FileUrl& folder) {
    return DiskSweeperScan::columnChildren(*files, folder, SweepInventory::emptyFor(folder));
  }

 private:
  explicit World(const TemporaryTree& tree) : share(tree.path("share"), tree.path("fuse")) {}
};

class DeadShareTest : public ::testing::Test {
 protected:
  DeadShareTest() {
    tree.folder("share");
    tree.folder("folder");
    tree.file("folder/file", 10'000);
    tree.file("file", 20'000);
    tree.link("alive", "folder");
    for (int i = 0; i < kLinks; ++i) tree.link("link " + std::to_string(i), "share/" + std::to_string(i));
  }

  void SetUp() override { DUNMERE_NEEDS(Feature::fuse); }

  static constexpr int kLinks = 500;
  // Waiting so often would outlast the test's own limit.
  static constexpr int kOften = 1000;
  // Threads left behind; some that have just answered may not be gone yet.
  static constexpr int kFew = 10;

  void expect(const std::function<void(World& world)>& body) {
    const auto result = runWithOwnMounts([&] {
      body(World::make(tree));
      return 0;
    });
    EXPECT_EQ(result.exitCode, 0) << result.output;
  }

  TemporaryTree tree;
};

TEST_F(DeadShareTest, ColumnWithManyLinksIntoItIsListedWithOneWait) {
  expect([this](World& world) {
    std::map<std::string, SweeperItem> rows;
    const auto column = world.column(tree.url()).value();
    for (const SweeperItem& row : column) rows.emplace(row.name, row);
    EXPECT_EQ(rows.size(), 4u + kLinks);
    EXPECT_TRUE(rows.at("share").isDirectory);
    EXPECT_EQ(rows.at("file").sizeBytes, tree.allocatedBytes("file"));
    EXPECT_TRUE(rows.at("link 7").isSymbolicLink);
    EXPECT_FALSE(rows.at("link 7").isDirectory);
    EXPECT_EQ(rows.at("link 7").sizeBytes, 0);
    EXPECT_LT(threads(), kFew);
  });
}

TEST_F(DeadShareTest, ColumnThatHoldsItIsListedAgainAndAgainWithoutFurtherWaits) {
  expect([this](World& world) {
    for (int i = 0; i < kOften; ++i) EXPECT_EQ(world.column(tree.url())->size(), 4u + kLinks);
    EXPECT_LT(threads(), kFew);
  });
}

TEST_F(DeadShareTest, ListingItTimesOutOnceAndThenFailsAtOnce) {
  expect([this](World& world) {
    for (int i = 0; i < kOften; ++i) EXPECT_EQ(errorOf(world.column(tree.url("share"))), ETIMEDOUT);
    EXPECT_EQ(errorOf(world.column(tree.url("share/below"))), ETIMEDOUT);
    EXPECT_LT(threads(), kFew);
  });
}

TEST_F(DeadShareTest, ItsEndIsNoticed) {
  expect([this](World& world) {
    EXPECT_EQ(errorOf(world.column(tree.url("share"))), ETIMEDOUT);
    world.share.end();
    int error = ETIMEDOUT;
    while (error == ETIMEDOUT) error = errorOf(world.column(tree.url("share")));
    EXPECT_EQ(error, ENOTCONN);
  });
}

TEST_F(DeadShareTest, ScanWaitsInItAndGoesOnWhenItEnds) {
  expect([this](World& world) {
    auto scan = DiskSweeperScan::runProgressiveScan(*world.files, tree.url(), [](const SweepInventory&) {});
    EXPECT_EQ(errorOf(world.column(tree.url("share"))), ETIMEDOUT);
    EXPECT_EQ(scan.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    world.share.end();
    const SweepInventory inventory = scan.get().value();
    EXPECT_TRUE(inventory.hadReadErrors);
    EXPECT_EQ(inventory.fileCount, 2);
  });
}

TEST_F(DeadShareTest, PaneGoesOnWhileItsScanHangsAndTheProgramMayQuit) {
  expect([this](World& world) {
    DiskSweeperPane pane(*world.files, world.desktop, world.mainThread, {[] { return false; }, [](bool) {}});
    pane.beginBrowsing(tree.url());
    EXPECT_EQ(pane.columnChildren().at(0).size(), 4u + kLinks);
    for (int round = 0; round < kOften; ++round) {
      const std::vector<SweeperItem> rows = pane.columnChildren().at(0);
      for (const SweeperItem& row : rows) {
        if (round > 0 && row.isSymbolicLink) continue;
        pane.selectItem(row, 0);
        EXPECT_EQ(pane.loadError().has_value(), row.name == "share") << row.name;
      }
      pane.reloadVisibleColumns();
      world.mainThread.runQueued();
    }
    EXPECT_TRUE(pane.showsStatusStrip());
    // Leaves with the scan still hanging: the parent sees the process end.
  });
}

TEST_F(DeadShareTest, WhatLiesInItStaysAndTheTrashAsksOnce) {
  expect([this](World& world) {
    Trash trash(*world.files);
    for (int i = 0; i < kOften; ++i) EXPECT_EQ(errorOf(trash.hold(tree.url("share/item"))->moveToTrash()), ETIMEDOUT);
    EXPECT_LT(threads(), kFew);
  });
}

TEST_F(DeadShareTest, WhatWasHeldBeforeItsShareFellSilentStays) {
  tree.folder("second share");
  expect([this](World& world) {
    SilentShare& share = *new SilentShare(tree.path("second share"), tree.path("fuse 2"));
    Trash trash(*world.files);
    const auto moved = trash.hold(tree.url("second share/item"))->moveToTrash();
    EXPECT_EQ(errorOf(moved), ENOTSUP) << "it answered";
    const auto held = trash.hold(tree.url("second share/item"));
    share.fallSilent();
    for (int i = 0; i < kOften; ++i) EXPECT_EQ(errorOf(held->moveToTrash()), ETIMEDOUT);
    EXPECT_LT(threads(), kFew);
  });
}

}  // namespace
}  // namespace dunmere::test
