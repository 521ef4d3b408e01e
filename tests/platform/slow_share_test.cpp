// Shares that answer, but take their time: nothing but time may be lost.
#include "tests/support/slow_share.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/platform/real_pane.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/plain_count.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

using std::chrono_literals::operator""ms;

class SlowShareTest : public ::testing::TestWithParam<std::tuple<std::chrono::milliseconds, bool>> {
 protected:
  static constexpr int kFiles = 40;

  SlowShareTest() {
    tree.folder("share");
    tree.folder("disk/Movies/old");
    for (int i = 0; i < kFiles; ++i) tree.file("disk/Movies/" + std::to_string(i), 10'000 * (i + 1));
    tree.file("disk/Movies/old/tape", 5'000);
    tree.file("disk/note", 20'000);
    tree.link("disk/to a file", "Movies/7");
    tree.link("disk/to a folder", "Movies/old");
    tree.link("disk/to nothing", "gone");
  }

  void SetUp() override { DUNMERE_NEEDS(Feature::fuse); }

  void expect(const std::function<void(RealPane& world)>& body) {
    const auto [delay, tellsKinds] = GetParam();
    const SlowShareOptions options{.delay = delay, .isSerial = false, .tellsKinds = tellsKinds};
    const auto result = runWithOwnMounts([&] {
      const SlowShare share(tree.path("disk"), tree.path("share"), tree.path("fuse"), options);
      body(*new RealPane);  // its threads may still use it when this process ends
      std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
      return 0;
    });
    EXPECT_EQ(result.exitCode, 0) << result.output;
  }

  /// Applies what comes, one after another, until `done`; `check` is called before each.
  static bool runUntil(RealPane& world, const std::function<bool()>& done, const std::function<void()>& check = [] {}) {
    return world.mainThread.runUntil([&] {
      check();
      return done();
    });
  }

  static std::vector<SweeperItem> rows(const RealPane& world, std::size_t column) {
    return world.pane.columnChildren().at(column).items();
  }

  /// As a listing that may take any time tells them.
  static std::vector<SweeperItem> freshRows(const RealPane& world, std::size_t column) {
    const FileUrl folder = world.pane.pathDirectories().at(column);
    return DiskSweeperScan::columnChildren(*world.files, folder, *world.pane.inventory()).value();
  }

  TemporaryTree tree;
};

TEST_P(SlowShareTest, ASweepWithOpenColumnsLosesNoRowTellsNoErrorAndCountsAll) {
  expect([this](RealPane& world) {
    std::vector<std::size_t> shown;
    const auto check = [&] {
      EXPECT_EQ(world.pane.loadError(), std::nullopt);
      shown.resize(world.pane.columnChildren().size());
      for (std::size_t column = 0; column < shown.size(); ++column) {
        EXPECT_GE(rows(world, column).size(), shown[column]) << "column " << column;
        shown[column] = rows(world, column).size();
      }
    };
    world.pane.beginBrowsing(tree.url("share"));
    EXPECT_TRUE(runUntil(world, [&] { return !rows(world, 0).empty(); }, check));
    world.pane.selectItem({tree.url("share/Movies"), "Movies", true}, 0);
    EXPECT_TRUE(runUntil(world, [&] { return world.pane.inventory()->scanComplete; }, check));
    const std::vector<std::vector<SweeperItem>> fresh = {freshRows(world, 0), freshRows(world, 1)};
    const auto isShown = [&] { return rows(world, 0) == fresh[0] && rows(world, 1) == fresh[1]; };
    EXPECT_TRUE(runUntil(world, isShown, check));
    EXPECT_FALSE(world.pane.inventory()->hadReadErrors);
    EXPECT_EQ(world.pane.scanBytesSoFar(), plainCount(tree.path("disk")).totalBytes);
  });
}

TEST_P(SlowShareTest, ItsLinksGetTheSizesOfTheirTargets) {
  expect([this](RealPane& world) {
    world.pane.beginBrowsing(tree.url("share"));
    const auto sizeOf = [&](const std::string& name) {
      const auto shown = rows(world, 0);
      const auto row = std::ranges::find(shown, name, &SweeperItem::name);
      return row == shown.end() ? -1 : row->sizeBytes;
    };
    const auto isSized = [&] {
      return sizeOf("to a file") == tree.allocatedBytes("disk/Movies/7") &&
             sizeOf("to a folder") == tree.allocatedBytes("disk/Movies/old/tape") && sizeOf("to nothing") == 0;
    };
    EXPECT_TRUE(runUntil(world, [&] { return world.pane.inventory()->scanComplete && isSized(); }));
  });
}

TEST_P(SlowShareTest, WhatItsTrashRefusesIsToldAndStays) {
  expect([this](RealPane& world) {
    world.pane.beginBrowsing(tree.url("share"));
    world.pane.selectItem({tree.url("share/note"), "note"}, 0);
    world.pane.requestTrash();
    world.pane.confirmedTrash();
    EXPECT_TRUE(runUntil(world, [&] { return world.pane.loadError().has_value(); }));
    EXPECT_TRUE(world.pane.loadError()->starts_with("“note” couldn’t be moved to the trash"))
        << *world.pane.loadError();
    EXPECT_TRUE(std::filesystem::exists(tree.path("disk/note")));
  });
}

class OddShareTest : public ::testing::Test {
 protected:
  OddShareTest() { tree.folder("share"); }
  void SetUp() override { DUNMERE_NEEDS(Feature::fuse); }

  void expect(const SlowShareOptions& options, const std::function<void(FileSystem& files)>& body) {
    const auto result = runWithOwnMounts([&] {
      const SlowShare share(tree.path("disk"), tree.path("share"), tree.path("fuse"), options);
      body(*makePlatformFileSystem());
      return 0;
    });
    EXPECT_EQ(result.exitCode, 0) << result.output;
  }

  TemporaryTree tree;
};

TEST_F(OddShareTest, WhatAnotherMachineHasMadeLargerCountsItsNewSize) {
  tree.folder("disk");
  tree.file("disk/film", 10'000);
  expect({.trustsNames = true}, [this](FileSystem& files) {
    const auto sweptBytes = [&] {
      return DiskSweeperScan::runProgressiveScan(files, tree.url("share"), [](const SweepInventory&) {})
          .get()
          ->totalFileBytes;
    };
    EXPECT_EQ(sweptBytes(), tree.allocatedBytes("disk/film"));
    tree.file("disk/film", 900'000);
    EXPECT_EQ(sweptBytes(), tree.allocatedBytes("disk/film"));
    EXPECT_GE(sweptBytes(), 900'000);
  });
}

TEST_F(OddShareTest, ASizeBeyondAllNumbersIsTheLargestOne) {
  tree.folder("disk");
  expect({.claimedBlocks = 1ULL << 52}, [this](FileSystem& files) {
    const auto values = files.volumeValues(tree.url("share"));
    ASSERT_TRUE(values);
    EXPECT_EQ(values->totalBytes, std::numeric_limits<std::int64_t>::max());
  });
}

std::string nameOf(const ::testing::TestParamInfo<SlowShareTest::ParamType>& info) {
  const auto [delay, tellsKinds] = info.param;
  return "Answering" + std::to_string(delay.count()) + "ms" + (tellsKinds ? "" : "WithoutKinds");
}

INSTANTIATE_TEST_SUITE_P(Delays, SlowShareTest,
                         ::testing::Combine(::testing::Values(1ms, 10ms, 100ms), ::testing::Bool()), nameOf);

}  // namespace
}  // namespace dunmere::test
