// A share that stops answering must not stop the window, nor the quitting; only a scan may wait for it.
#include "tests/support/dead_share.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <string>
#include <vector>

#include "tests/platform/real_pane.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

std::ptrdiff_t threads() {
  const std::filesystem::directory_iterator all("/proc/self/task");
  return std::distance(begin(all), end(all));
}

struct World : RealPane {
  explicit World(const TemporaryTree& tree) : share(tree.path("share"), tree.path("fuse")) {}

  bool runUntil(const std::function<bool()>& done) { return mainThread.runUntil(done); }

  DeadShare share;
};

class DeadShareTest : public ::testing::Test {
 protected:
  DeadShareTest() {
    tree.folder("share");
    tree.folder("folder");
    tree.file("folder/file", 10'000);
    tree.file("file", 20'000);
    for (int i = 0; i < kLinks; ++i) tree.link("link " + std::to_string(i), "share/" + std::to_string(i));
  }

  void SetUp() override { DUNMERE_NEEDS(Feature::fuse); }

  static constexpr int kLinks = 500;
  // Waiting for each would outlast the test's own limit.
  static constexpr int kOften = 1000;
  // Of the scan, and those that are stuck: one for each folder and item that was asked for, some for links.
  static constexpr int kFew = 45;

  void expect(const std::function<void(World& world)>& body) {
    const auto result = runWithOwnMounts([&] {
      World& world = *new World(tree);
      world.pane.beginBrowsing(tree.url());
      EXPECT_TRUE(world.runUntil([&] { return !world.pane.columnChildren().at(0).empty(); }));
      body(world);
      EXPECT_LT(threads(), kFew);
      // Leaves with threads still stuck: the parent sees the process end.
      return 0;
    });
    EXPECT_EQ(result.exitCode, 0) << result.output;
  }

  SweeperItem row(World& world, const std::string& name) {
    const auto rows = world.pane.columnChildren().at(0).items();
    return *std::ranges::find(rows, name, &SweeperItem::name);
  }

  TemporaryTree tree;
};

TEST_F(DeadShareTest, AColumnThatHoldsItAndManyLinksIntoItIsListedAgainAndAgain) {
  expect([this](World& world) {
    EXPECT_EQ(world.pane.columnChildren().at(0).size(), 3u + kLinks);
    EXPECT_TRUE(row(world, "share").isDirectory);
    EXPECT_EQ(row(world, "file").sizeBytes, tree.allocatedBytes("file"));
    EXPECT_EQ(row(world, "link 7"), (SweeperItem{tree.url("link 7"), "link 7", false, 0, false, true}));
    tree.file("new", 30'000);
    world.pane.reloadVisibleColumns();
    EXPECT_TRUE(world.runUntil([&] { return world.pane.columnChildren().at(0).size() == 4u + kLinks; }));
    EXPECT_EQ(world.pane.loadError(), std::nullopt);
  });
}

TEST_F(DeadShareTest, ItIsBeingReadForEverAndEverythingElseGoesOn) {
  expect([this](World& world) {
    const SweeperItem share = row(world, "share");
    const SweeperItem folder = row(world, "folder");
    for (int i = 0; i < kOften; ++i) {
      world.pane.selectItem(share, 0);
      EXPECT_TRUE(world.pane.isReadingColumn(1));
      world.mainThread.runQueued();
    }
    world.pane.selectItem(folder, 0);
    EXPECT_TRUE(world.runUntil([&] { return world.pane.columnChildren().at(1).size() == 1; }));
    EXPECT_EQ(world.pane.loadError(), std::nullopt);
    EXPECT_TRUE(world.pane.showsStatusStrip()) << "the scan waits in it";
    world.pane.backToVolumes();
    EXPECT_TRUE(world.runUntil([&] { return !world.pane.volumes().empty(); }));
  });
}

TEST_F(DeadShareTest, ItsEndIsNoticed) {
  expect([this](World& world) {
    world.pane.selectItem(row(world, "share"), 0);
    world.share.end();
    EXPECT_TRUE(world.runUntil([&] { return world.pane.loadError().has_value(); }));
    EXPECT_TRUE(world.runUntil([&] { return world.pane.inventory()->scanComplete; }));
    EXPECT_TRUE(world.pane.inventory()->hadReadErrors);
    EXPECT_EQ(world.pane.scanFileCount(), 2);
  });
}

TEST_F(DeadShareTest, WhatLiesInItIsAskedForOnceAndHoldsUpNoOtherTrash) {
  expect([this](World& world) {
    world.pane.selectItem(row(world, "share"), 0);
    const SweeperItem item{tree.url("share/item"), "item"};
    for (int i = 0; i < kOften; ++i) {
      world.pane.selectItem(item, 1);
      world.pane.requestTrash();
      world.pane.confirmedTrash();
      world.mainThread.runQueued();
    }
    world.pane.selectItem({tree.url("gone"), "gone"}, 0);
    world.pane.requestTrash();
    world.pane.confirmedTrash();
    EXPECT_TRUE(world.runUntil([&] { return world.pane.loadError().has_value(); }));
    EXPECT_EQ(world.pane.loadError(), "The file “gone” doesn’t exist.");
  });
}

}  // namespace
}  // namespace dunmere::test
