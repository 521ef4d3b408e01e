// Panes and the scans that outlive them.

#include <chrono>
#include <random>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

class PaneLifetime : public PaneTest {
 protected:
  static constexpr int kFolders = 6;  // with the root

  PaneLifetime() {
    for (int folder = 1; folder < kFolders; ++folder) {
      for (int file = 0; file < 4; ++file) {
        fileSystem_.addFile("/tree/" + std::to_string(folder) + "/" + std::to_string(file), 1000);
      }
    }
  }

  void destroyPane() { pane_.reset(); }

  /// Waits until scans have opened so many folders.
  bool waitForScanOpenings(int count) {
    return mainThread_.runUntil([this, count] { return world_.scanOpenings() >= count; });
  }
};

TEST_F(PaneLifetime, ScanRunsToItsEndWithoutItsPane) {
  world_.holdScansAt("/tree/1");
  pane().beginBrowsing(FileUrl("/tree"));
  destroyPane();
  world_.releaseScans();
  EXPECT_TRUE(waitForScanOpenings(kFolders));
}

TEST_F(PaneLifetime, WaitingScanGoesOnWhenItsPaneVanishes) {
  pane().beginBrowsing(FileUrl("/tree"));
  // After one snapshot was applied the scan comes to wait for the next one.
  ASSERT_TRUE(mainThread_.runNext());
  destroyPane();
  EXPECT_TRUE(waitForScanOpenings(kFolders));
}

TEST_F(PaneLifetime, SnapshotOnItsWayToADeadPaneIsDropped) {
  pane().beginBrowsing(FileUrl("/tree"));
  ASSERT_TRUE(mainThread_.runNext());
  const int notifications = world_.notifications;
  const std::size_t listings = world_.listings().size();
  destroyPane();
  EXPECT_TRUE(waitForScanOpenings(kFolders));
  mainThread_.runQueued();
  EXPECT_EQ(world_.notifications, notifications);
  EXPECT_EQ(world_.listings().size(), listings);
}

TEST_F(PaneLifetime, FailureOfADeadPanesScanIsDropped) {
  world_.holdScansAt("/gone");
  pane().beginBrowsing(FileUrl("/gone"));
  destroyPane();
  world_.releaseScans();
  EXPECT_TRUE(waitForScanOpenings(1));
  mainThread_.runQueued();
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(PaneLifetime, ScanOfADeadPaneLeavesTheNextPaneAlone) {
  world_.holdScansAt("/tree/1");
  pane().beginBrowsing(FileUrl("/tree"));
  destroyPane();
  pane_ = makePane();
  world_.releaseScans();
  EXPECT_TRUE(waitForScanOpenings(kFolders));
  mainThread_.runQueued();
  EXPECT_FALSE(pane().inventory());
  EXPECT_EQ(pane().scanStatus(), "");
}

TEST_F(PaneLifetime, PanesMayVanishAtAnyMoment) {
  constexpr int kPanes = 400;
  std::mt19937 random(20260107);
  const auto upTo = [&random](int most) { return std::uniform_int_distribution(0, most)(random); };
  int scans = 0;
  for (int i = 0; i < kPanes; ++i) {
    pane_ = makePane();
    const int sweeps = 1 + upTo(2);
    for (int sweep = 0; sweep < sweeps; ++sweep, ++scans) {
      pane().beginBrowsing(FileUrl("/tree"));
      for (int steps = upTo(3); steps > 0; --steps) ASSERT_TRUE(mainThread_.runNext());
    }
    std::this_thread::sleep_for(std::chrono::microseconds(upTo(300)));
    if (upTo(1) == 0) mainThread_.runQueued();
    destroyPane();
    if (upTo(1) == 0) mainThread_.runQueued();
  }
  const int notifications = world_.notifications;
  EXPECT_TRUE(waitForScanOpenings(scans * kFolders));
  mainThread_.runQueued();
  EXPECT_EQ(world_.notifications, notifications);
}

}  // namespace
}  // namespace dunmere::test
