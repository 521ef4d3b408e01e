// Scans, listings and the pane while the system refuses them memory at one call after the other, as it meets them: the
// allocator's heaps and threads' stacks. Each case runs in a process of its own, whose allocator has nothing in store.
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "sweeper/disk_sweeper_pane.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/background_queue.h"
#include "tests/support/child_process.h"
#include "tests/support/failing_mappings.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/plain_count.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

constexpr int kNothingFailed = 77;

class MappingFaults : public ::testing::Test {
 protected:
  MappingFaults() {
    for (const std::string folder : {"a", "a/b", "a/b/c", "d"}) {
      tree.folder(folder);
      for (int file = 0; file < 100; ++file) tree.file(folder + "/file " + std::to_string(file));
      tree.file(folder + "/large", 50'000);
    }
    expected = plainCount(tree.path());
  }

  /// What a process may use when it begins to be short of memory.
  struct World {
    std::unique_ptr<FileSystem> files = makePlatformFileSystem();
    FakeDesktop desktop;
    MainThreadQueue mainThread;
    BackgroundQueue background;
  };

  /// Has the first, second … call fail in turn, once or from there on, until `work` makes fewer; it ends the failing
  /// before it looks at what came out.
  /// `least`: so many calls there are at least to fail.
  template <typename Work>
  void failEach(Work work, int least = 5) {
    for (const bool lasting : {false, true}) {
      int first = 1;
      for (bool hasFailed = true; hasFailed && !HasFailure(); ++first) {
        SCOPED_TRACE("call " + std::to_string(first) + (lasting ? " and all after it" : ""));
        const ChildResult result = runInChild([&] {
          World& world = *new World();  // a thread may still be ending when this process does
          FailingMappings failing(first, lasting);
          work(world, failing);
          return failing.hasFailed() ? 0 : kNothingFailed;
        });
        hasFailed = result.exitCode != kNothingFailed;
        EXPECT_TRUE(!hasFailed || result.exitCode == 0) << result.output;
      }
      EXPECT_GE(first, least) << "hardly anything failed";
    }
  }

  template <typename Value>
  static void expectShortage(const std::expected<Value, SweepError>& result) {
    EXPECT_TRUE(errorOf(result) == ENOMEM || errorOf(result) == EAGAIN) << result.error().code.message();
  }

  TemporaryTree tree;
  PlainCount expected;
};

TEST_F(MappingFaults, ScanFailsOrIsWhole) {
  for (const unsigned readers : {0u, 3u}) {
    failEach([&](World& world, FailingMappings& failing) {
      std::optional<DiskSweeperScan::ScanResult> result;
      try {
        const auto ignore = [](const SweepInventory&) {};
        result = DiskSweeperScan::runProgressiveScan(*world.files, tree.url(), ignore, {.readers = readers}).get();
      } catch (const std::bad_alloc&) {  // before it began
      }
      failing.end();
      if (!result) return;
      if (!*result) return expectShortage(*result);
      EXPECT_EQ((*result)->fileCount, expected.fileCount);
      EXPECT_EQ((*result)->totalFileBytes, expected.totalBytes);
      EXPECT_FALSE((*result)->hadReadErrors);
    });
  }
}

TEST_F(MappingFaults, ListingFailsOrIsWhole) {
  failEach(
      [&](World& world, FailingMappings& failing) {
        const auto inventory = SweepInventory::emptyFor(tree.url());
        const auto column = DiskSweeperScan::columnChildren(*world.files, tree.url("a"), inventory);
        failing.end();
        if (!column) return expectShortage(column);
        EXPECT_EQ(*column, DiskSweeperScan::columnChildren(*world.files, tree.url("a"), inventory).value());
      },
      1);  // a small column asks for little
}

TEST_F(MappingFaults, PaneShowsTheSweepOrSaysThatItFailed) {
  failEach([&](World& world, FailingMappings& failing) {
    DiskSweeperPane pane(*world.files, world.desktop, world.mainThread, world.background,
                         {[] { return false; }, [](bool) {}});
    pane.beginBrowsing(tree.url());
    world.mainThread.runUntil([&] { return failing.hasFailed() || !pane.showsStatusStrip(); });
    failing.end();
    EXPECT_TRUE(world.mainThread.runUntil([&] { return !pane.showsStatusStrip(); }));
    if (pane.phase() != Phase::browsing) {
      EXPECT_TRUE(pane.loadError().has_value());
      return;
    }
    EXPECT_EQ(pane.scanFileCount(), expected.fileCount);
    EXPECT_EQ(pane.scanBytesSoFar(), expected.totalBytes);
  });
}

}  // namespace
}  // namespace dunmere::test
