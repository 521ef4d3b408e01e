// Browsing: what starting a sweep shows at once, what each snapshot changes, what a failure leaves.

#include <gmock/gmock.h>

#include <set>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class Browsing : public PaneTest {
 protected:
  Browsing() {
    fileSystem_.addFile("/data/big/one", 3'000'000);
    fileSystem_.addFile("/data/big/deep/two", 1'000'000);
    fileSystem_.addFile("/data/small/three", 500);
    fileSystem_.addFile("/data/note", 2'000);
  }

  /// Opens /data, /data/big and /data/big/deep side by side.
  void openThreeColumns() {
    click(0, "big");
    click(1, "deep");
    ASSERT_EQ(pane().columnChildren().size(), 3u);
  }

  std::size_t listingsSoFar() const { return world_.listings().size(); }
  std::vector<std::string> listingsSince(std::size_t count) const {
    return {world_.listings().begin() + static_cast<std::ptrdiff_t>(count), world_.listings().end()};
  }
};

TEST_F(Browsing, RootColumnIsShownAtOnce) {
  world_.holdScansAt("/data");
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().scanStatus(), "Starting…");
  EXPECT_EQ(pane().scanFileCount(), 0);
  EXPECT_EQ(pane().scanBytesSoFar(), 0);
  EXPECT_EQ(pane().pathDirectories(), urls({"/data"}));
  EXPECT_EQ(pane().columnLoadIDs().size(), 1u);
  ASSERT_EQ(pane().columnChildren().size(), 1u);
  EXPECT_THAT(names(0), ElementsAre("note", "big", "small"));
  EXPECT_EQ(row(0, "note").sizeBytes, 2'000);
  EXPECT_EQ(row(0, "big").sizeBytes, 0);
  EXPECT_TRUE(row(0, "big").sizeIsPartialMinimum);
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(Browsing, InventoryIsEmptyAtFirst) {
  world_.holdScansAt("/data");
  pane().beginBrowsing(FileUrl("/data/./"));
  const SweepInventory& inventory = *pane().inventory();
  EXPECT_EQ(inventory.root, FileUrl("/data/./"));
  EXPECT_EQ(inventory.rootPath, "/data");
  EXPECT_TRUE(inventory.pathBytes.empty());
  EXPECT_FALSE(inventory.hadReadErrors);
  EXPECT_EQ(inventory.fileCount, 0);
  EXPECT_EQ(inventory.totalFileBytes, 0);
  EXPECT_FALSE(inventory.scanComplete);
}

TEST_F(Browsing, BeginningAgainStartsFromNothing) {
  sweep("/data");
  openThreeColumns();
  click(2, "two");
  fileSystem_.makeUnreadable("/data/big");
  pane().reloadVisibleColumns();
  ASSERT_TRUE(pane().loadError());
  ASSERT_TRUE(pane().selectedLeafURL());
  const ColumnLoadId oldToken = pane().columnLoadIDs().front();
  world_.holdScansAt("/data/small");
  pane().beginBrowsing(FileUrl("/data/small"));
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_FALSE(pane().inventory()->scanComplete);
  EXPECT_EQ(pane().inventory()->fileCount, 0);
  EXPECT_EQ(pane().scanStatus(), "Starting…");
  EXPECT_EQ(pane().scanFileCount(), 0);
  EXPECT_EQ(pane().scanBytesSoFar(), 0);
  EXPECT_EQ(pane().pathDirectories(), urls({"/data/small"}));
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
  ASSERT_EQ(pane().columnChildren().size(), 1u);
  EXPECT_THAT(names(0), ElementsAre("three"));
  ASSERT_EQ(pane().columnLoadIDs().size(), 1u);
  EXPECT_NE(pane().columnLoadIDs().front(), oldToken);
}

TEST_F(Browsing, SnapshotReplacesInventoryCountersAndStatus) {
  world_.holdScansAt("/data/small");
  pane().beginBrowsing(FileUrl("/data"));
  ASSERT_TRUE(mainThread_.runUntil([this] { return pane().scanFileCount() > 0; }));
  EXPECT_EQ(pane().inventory()->fileCount, pane().scanFileCount());
  EXPECT_EQ(pane().inventory()->totalFileBytes, pane().scanBytesSoFar());
  EXPECT_FALSE(pane().inventory()->scanComplete);
  EXPECT_THAT(pane().scanStatus(), StartsWith(std::to_string(pane().scanFileCount()) + " files · "));
  EXPECT_THAT(pane().scanStatus(), EndsWith(" scanned"));
}

TEST_F(Browsing, StatusCountsFilesInPlainDigits) {
  for (int i = 0; i < 1234; ++i) fileSystem_.addFile("/many/files/" + std::to_string(i), 1'000'000);
  fileSystem_.addFile("/many/last/file", 0);
  world_.holdScansAt("/many/last");
  pane().beginBrowsing(FileUrl("/many"));
  runUntilCounted(1234);
  EXPECT_EQ(pane().scanStatus(), "1234 files · 1.23 GB scanned");
  world_.releaseScans();
  runUntilComplete();
  EXPECT_EQ(pane().scanStatus(), "1235 files · 1.23 GB");
}

TEST_F(Browsing, FinalSnapshotSaysTheSameWithoutScanned) {
  fileSystem_.addFolder("/data/void");
  world_.holdScansAt("/data/void");
  pane().beginBrowsing(FileUrl("/data"));
  runUntilCounted(4);
  EXPECT_EQ(pane().scanStatus(), "4 files · 4 MB scanned");
  world_.releaseScans();
  runUntilComplete();
  EXPECT_EQ(pane().scanStatus(), "4 files · 4 MB");
  EXPECT_EQ(pane().phase(), Phase::browsing);
}

TEST_F(Browsing, FolderSizesGrowWithTheSnapshots) {
  world_.holdScansAt("/data/big/deep");
  pane().beginBrowsing(FileUrl("/data"));
  ASSERT_TRUE(mainThread_.runUntil([this] { return row(0, "big").sizeBytes > 0; }));
  EXPECT_EQ(row(0, "big").sizeBytes, 3'000'000);
  EXPECT_TRUE(row(0, "big").sizeIsPartialMinimum);
  world_.releaseScans();
  runUntilComplete();
  EXPECT_EQ(row(0, "big").sizeBytes, 4'000'000);
  EXPECT_FALSE(row(0, "big").sizeIsPartialMinimum);
  EXPECT_THAT(names(0), ElementsAre("big", "note", "small"));
}

TEST_F(Browsing, EachSnapshotIsToldOnce) {
  pane().beginBrowsing(FileUrl("/data"));
  int told = world_.notifications;
  EXPECT_EQ(told, 1);
  while (!pane().inventory()->scanComplete) {
    ASSERT_TRUE(mainThread_.runNext());
    EXPECT_EQ(world_.notifications, ++told);
  }
}

TEST_F(Browsing, SnapshotListsEveryOpenColumnRootFirst) {
  pane().beginBrowsing(FileUrl("/data"));
  openThreeColumns();
  const std::size_t before = listingsSoFar();
  ASSERT_TRUE(mainThread_.runNext());
  EXPECT_THAT(listingsSince(before), ElementsAre("/data", "/data/big", "/data/big/deep"));
}

TEST_F(Browsing, SnapshotKeepsTheTokens) {
  pane().beginBrowsing(FileUrl("/data"));
  openThreeColumns();
  const auto tokens = pane().columnLoadIDs();
  runUntilComplete();
  EXPECT_EQ(pane().columnLoadIDs(), tokens);
}

TEST_F(Browsing, ReloadingListsEveryOpenColumnRootFirst) {
  sweep("/data");
  openThreeColumns();
  fileSystem_.addFile("/data/big/deep/new", 9'000'000);
  const std::size_t before = listingsSoFar();
  world_.notifications = 0;
  pane().reloadVisibleColumns();
  EXPECT_THAT(listingsSince(before), ElementsAre("/data", "/data/big", "/data/big/deep"));
  EXPECT_THAT(names(2), ElementsAre("new", "two"));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(Browsing, ReloadingWithoutAnInventoryListsNothing) {
  pane().beginBrowsing(FileUrl("/gone"));
  ASSERT_TRUE(mainThread_.runUntil([this] { return !pane().inventory(); }));
  ASSERT_EQ(pane().columnLoadIDs().size(), 1u);
  const std::size_t before = listingsSoFar();
  pane().reloadVisibleColumns();
  EXPECT_EQ(listingsSoFar(), before);
}

TEST_F(Browsing, ListingForAReplacedTokenIsDropped) {
  sweep("/data");
  click(0, "big");
  const ColumnLoadId stale = pane().columnLoadIDs()[1];
  click(0, "small");
  const auto before = state();
  const std::size_t listings = listingsSoFar();
  pane().applyColumn(1, stale, SweepInventory::emptyFor(FileUrl("/data")));
  EXPECT_EQ(state(), before);
  EXPECT_EQ(listingsSoFar(), listings);
}

TEST_F(Browsing, ListingForACurrentTokenIsApplied) {
  sweep("/data");
  world_.notifications = 0;
  pane().applyColumn(0, pane().columnLoadIDs()[0], SweepInventory::emptyFor(FileUrl("/data")));
  EXPECT_EQ(row(0, "big").sizeBytes, 0);
  EXPECT_TRUE(row(0, "big").sizeIsPartialMinimum);
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(Browsing, ListingForAColumnThatIsNotOpenIsDropped) {
  sweep("/data");
  const auto before = state();
  const std::size_t listings = listingsSoFar();
  const ColumnLoadId token = pane().columnLoadIDs()[0];
  for (const std::ptrdiff_t depth : {-1, 1, 1000}) pane().applyColumn(depth, token, *pane().inventory());
  EXPECT_EQ(state(), before);
  EXPECT_EQ(listingsSoFar(), listings);
}

TEST_F(Browsing, ListingForATokenWithoutAFolderIsDropped) {
  sweep("/data");
  const SweepInventory inventory = *pane().inventory();
  pane().backToVolumes();
  ASSERT_EQ(pane().columnLoadIDs().size(), 1u);
  const std::size_t listings = listingsSoFar();
  pane().applyColumn(0, pane().columnLoadIDs()[0], inventory);
  EXPECT_EQ(listingsSoFar(), listings);
  EXPECT_THAT(pane().columnChildren(), IsEmpty());
  EXPECT_EQ(pane().loadError(), std::nullopt);
}

TEST_F(Browsing, ListingThatFailsEmptiesItsColumn) {
  sweep("/data");
  click(0, "big");
  fileSystem_.makeUnreadable("/data/big");
  pane().reloadVisibleColumns();
  EXPECT_EQ(pane().loadError(), "The file “big” couldn’t be opened because you don’t have permission to view it.");
  EXPECT_THAT(pane().columnChildren()[1], IsEmpty());
  EXPECT_THAT(pane().columnChildren()[0], Not(IsEmpty()));
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().pathDirectories(), urls({"/data", "/data/big"}));
}

TEST_F(Browsing, ListingThatSucceedsKeepsTheError) {
  sweep("/data");
  click(0, "big");
  fileSystem_.makeUnreadable("/data/big");
  pane().reloadVisibleColumns();
  fileSystem_.makeReadable("/data/big");
  pane().reloadVisibleColumns();
  EXPECT_THAT(names(1), ElementsAre("one", "deep"));
  EXPECT_TRUE(pane().loadError());
}

TEST_F(Browsing, LaterListingErrorReplacesTheEarlier) {
  sweep("/data");
  click(0, "big");
  fileSystem_.makeUnreadable("/data");
  fileSystem_.failReadingAfter("/data/big", 1);
  pane().reloadVisibleColumns();
  EXPECT_EQ(pane().loadError(), "The file “big” couldn’t be opened.");
}

TEST_F(Browsing, RootThatIsGoneReturnsToTheDrivesWithTheError) {
  pane().beginBrowsing(FileUrl("/gone"));
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().loadError(), "The file “gone” couldn’t be opened because there is no such file.");
  world_.notifications = 0;
  ASSERT_TRUE(mainThread_.runNext());
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_EQ(pane().loadError(), "The file couldn’t be opened.");
  EXPECT_FALSE(pane().inventory());
  EXPECT_EQ(pane().sweepRoot(), std::nullopt);
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(Browsing, FailedScanLeavesColumnsAndCounters) {
  desktop_.nextChoice = FileUrl("/data");
  world_.holdScansAt("/data");
  pane().openFolderSweep();
  openThreeColumns();
  const auto columns = pane().columnChildren();
  const auto tokens = pane().columnLoadIDs();
  fileSystem_.remove("/data");
  world_.releaseScans();
  ASSERT_TRUE(mainThread_.runUntil([this] { return pane().phase() == Phase::chooseTarget; }));
  EXPECT_EQ(pane().sweepRoot(), std::nullopt);
  EXPECT_FALSE(pane().inventory());
  EXPECT_EQ(pane().loadError(), "The file couldn’t be opened.");
  EXPECT_EQ(pane().columnChildren(), columns);
  EXPECT_EQ(pane().columnLoadIDs(), tokens);
  EXPECT_EQ(pane().pathDirectories(), urls({"/data", "/data/big", "/data/big/deep"}));
  EXPECT_EQ(pane().scanStatus(), "Starting…");
}

TEST_F(Browsing, NextSweepClearsTheErrorOfAFailedOne) {
  pane().beginBrowsing(FileUrl("/gone"));
  ASSERT_TRUE(mainThread_.runNext());
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_EQ(pane().phase(), Phase::browsing);
}

TEST_F(Browsing, FolderThatCannotBeReadIsNoFailure) {
  fileSystem_.makeUnreadable("/data/small");
  sweep("/data");
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_TRUE(pane().inventory()->hadReadErrors);
  EXPECT_TRUE(row(0, "big").sizeIsPartialMinimum);
}

TEST_F(Browsing, AbandonedScanStillSetsInventoryCountersAndStatus) {
  world_.holdScansAt("/data/big");
  pane().beginBrowsing(FileUrl("/data"));
  pane().backToVolumes();
  const std::size_t listings = listingsSoFar();
  world_.releaseScans();
  runUntilComplete();
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_EQ(pane().inventory()->root, FileUrl("/data"));
  EXPECT_EQ(pane().scanFileCount(), 4);
  EXPECT_EQ(pane().scanBytesSoFar(), 4'002'500);
  EXPECT_EQ(pane().scanStatus(), "4 files · 4 MB");
  EXPECT_EQ(pane().sweepRoot(), std::nullopt);
  EXPECT_THAT(pane().columnChildren(), IsEmpty());
  EXPECT_EQ(listingsSoFar(), listings);
}

TEST_F(Browsing, AbandonedScanOverwritesANewerSweep) {
  fileSystem_.addFile("/other/file", 1);
  world_.holdScansAt("/data");
  pane().beginBrowsing(FileUrl("/data"));
  sweep("/other");
  ASSERT_EQ(pane().inventory()->root, FileUrl("/other"));
  const std::size_t listings = listingsSoFar();
  world_.releaseScans();
  ASSERT_TRUE(mainThread_.runNext());
  EXPECT_EQ(pane().inventory()->root, FileUrl("/data"));
  EXPECT_FALSE(pane().inventory()->scanComplete);
  EXPECT_THAT(pane().scanStatus(), EndsWith(" scanned"));
  EXPECT_EQ(pane().pathDirectories(), urls({"/other"}));
  EXPECT_THAT(listingsSince(listings), ElementsAre("/other"));
}

TEST_F(Browsing, AbandonedScanThatFailsEndsANewerSweep) {
  world_.holdScansAt("/gone");
  pane().beginBrowsing(FileUrl("/gone"));
  sweep("/data");
  world_.releaseScans();
  ASSERT_TRUE(mainThread_.runUntil([this] { return pane().phase() == Phase::chooseTarget; }));
  EXPECT_EQ(pane().loadError(), "The file couldn’t be opened.");
  EXPECT_EQ(pane().pathDirectories(), urls({"/data"}));
}

TEST_F(Browsing, PaneNeedsNoListener) {
  pane().setListener(nullptr);
  sweep("/data");
  EXPECT_EQ(pane().scanFileCount(), 4);
}

TEST(ColumnLoadIdTest, IsUniqueAcrossThreads) {
  std::vector<std::vector<ColumnLoadId>> drawn(4);
  std::vector<std::thread> threads;
  for (auto& ids : drawn) {
    threads.emplace_back([&ids] {
      for (int i = 0; i < 500; ++i) ids.push_back(ColumnLoadId::next());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<ColumnLoadId> distinct;
  for (const auto& ids : drawn) distinct.insert(ids.begin(), ids.end());
  EXPECT_EQ(distinct.size(), 2000u);
  EXPECT_FALSE(distinct.contains(ColumnLoadId{}));
}

}  // namespace
}  // namespace dunmere::test
