// Points where a volume mounts itself: looking at them asks for no mount.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "tests/support/automounter.h"
#include "tests/support/child_process.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

class AutomountTest : public ::testing::Test {
 protected:
  void SetUp() override { DUNMERE_NEEDS(Feature::automounts); }

  /// Calls `look` as a user beside the automounter; the test fails if a mount is asked for.
  void expectNoMount(const std::function<void(FileSystem& files)>& look) {
    tree.folder("disk/point");
    tree.file("disk/file", 5'000);
    tree.folder("disk/net");
    const auto result = runWithOwnMounts([&] {
      const Automounter automounter;
      automounter.mountAt(tree.path("disk/point"), "direct");
      automounter.mountAt(tree.path("disk/net"), "indirect");
      tree.folder("disk/net/host");
      const auto user = runInChild([&] {
        ::setpgid(0, 0);
        ::alarm(20);  // whoever has asked waits for ever
        look(*makePlatformFileSystem());
        return 0;
      });
      EXPECT_EQ(user.exitCode, 0) << user.output;
      EXPECT_FALSE(automounter.wasAsked());
      return 0;
    });
    EXPECT_EQ(result.exitCode, 0) << result.output;
  }

  TemporaryTree tree;
};

TEST_F(AutomountTest, ASweepFindsNothingThereWhichIsNoReadError) {
  expectNoMount([this](FileSystem& files) {
    const auto inventory =
        DiskSweeperScan::runProgressiveScan(files, tree.url("disk"), [](const SweepInventory&) {}).get();
    ASSERT_TRUE(inventory);
    EXPECT_FALSE(inventory->hadReadErrors);
    EXPECT_EQ(inventory->fileCount, 1);
  });
}

TEST_F(AutomountTest, AColumnShowsItAsAnEmptyFolder) {
  expectNoMount([this](FileSystem& files) {
    const auto inventory = SweepInventory::emptyFor(tree.url("disk"));
    const auto rows = [&](const std::string& folder) {
      return DiskSweeperScan::columnChildren(files, tree.url(folder), inventory);
    };
    ASSERT_TRUE(rows("disk"));
    EXPECT_EQ(rows("disk")->size(), 3U);
    for (const char* point : {"disk/point", "disk/point/", "disk/net/host"}) {
      const auto there = rows(point);
      ASSERT_TRUE(there) << point;
      EXPECT_TRUE(there->empty()) << point;
    }
    EXPECT_EQ(rows("disk/net")->size(), 1U);
  });
}

TEST_F(AutomountTest, TheListOfDrivesAsksForNone) {
  expectNoMount([](FileSystem& files) { DiskSweeperScan::listVolumes(files); });
}

TEST_F(AutomountTest, WhatIsMountedThereIsSwept) {
  tree.folder("disk/point");
  const auto result = runWithOwnMounts([&] {
    const Automounter automounter;
    automounter.mountAt(tree.path("disk/point"), "direct");
    mountNew(tree.path("disk/point"), "tmpfs");
    tree.file("disk/point/file", 9'000);
    const auto user = runInChild([&] {
      ::setpgid(0, 0);
      ::alarm(20);
      const auto files = makePlatformFileSystem();
      const auto inventory =
          DiskSweeperScan::runProgressiveScan(*files, tree.url("disk"), [](const SweepInventory&) {}).get();
      EXPECT_EQ(inventory->totalFileBytes, 12'288);
      return 0;
    });
    EXPECT_EQ(user.exitCode, 0) << user.output;
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

}  // namespace
}  // namespace dunmere::test
