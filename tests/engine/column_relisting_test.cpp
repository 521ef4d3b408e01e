// A column that is listed again shows what a fresh listing would, and does not do again what need not be done.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "engine/column_listing.h"
#include "engine/disk_sweeper_scan.h"
#include "tests/engine/column_rows.h"
#include "tests/engine/scan_results.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/print_values.h"
#include "tests/support/random_seed.h"

namespace dunmere::test {
namespace {

class KeyCountingFileSystem : public MemoryFileSystem {
 public:
  std::string nameSortKey(std::string_view name) override {
    ++madeKeys;
    return MemoryFileSystem::nameSortKey(name);
  }
  std::atomic<int> madeKeys = 0;  // many are made on several threads
};

/// The column of /root, as a window keeps it.
class Relisting : public testing::Test {
 protected:
  Relisting() {
    fileSystem_.addFolder("/root");
    fileSystem_.setStamps(true);
    fileSystem_.onRead([this](const std::string&) { ++reads_; });
  }

  using Rows = std::vector<SweeperItem>;

  const Rows& list() {
    EXPECT_TRUE(listing_.list(fileSystem_, FileUrl("/root"), inventory_, rows_));
    return rows_;
  }
  Rows listAnew() { return DiskSweeperScan::columnChildren(fileSystem_, FileUrl("/root"), inventory_).value(); }
  int readsOfListing() {
    const int before = reads_;
    list();
    return reads_ - before;
  }
  int keysMadeByListing() {
    const int before = fileSystem_.madeKeys;
    list();
    return fileSystem_.madeKeys - before;
  }
  void scan() { inventory_ = inventoryOfScan(fileSystem_, "/root"); }
  /// A scan of this folder alone, which has counted something but is not complete.
  void startScanOf(const std::string& folder) {
    inventory_ = inventoryOfScan(fileSystem_, folder);
    inventory_.scanComplete = false;
  }

  KeyCountingFileSystem fileSystem_;
  SweepInventory inventory_ = SweepInventory::emptyFor(FileUrl("/root"));
  ColumnListing listing_;
  Rows rows_;
  std::atomic<int> reads_ = 0;  // a scan reads on several threads
};

TEST_F(Relisting, AFolderThatIsProvablyTheSameIsNotReadAgain) {
  fileSystem_.addFile("/root/a", 7);
  EXPECT_GT(readsOfListing(), 0);
  scan();
  reads_ = 0;
  EXPECT_EQ(readsOfListing(), 0);
  fileSystem_.addFile("/root/b", 7);
  EXPECT_GT(readsOfListing(), 0);
  EXPECT_EQ(rows_, listAnew());
}

TEST_F(Relisting, AFolderThatCannotProveItIsReadEveryTime) {
  fileSystem_.setStamps(false);
  fileSystem_.addFile("/root/a", 7);
  list();
  EXPECT_GT(readsOfListing(), 0);
}

TEST_F(Relisting, NamesThatStayNeedNoNewKeys) {
  for (const char* file : {"/root/a", "/root/b", "/root/c"}) fileSystem_.addFile(file, 7);
  for (const bool stamps : {true, false}) {
    fileSystem_.setStamps(stamps);
    listing_ = {};
    rows_.clear();
    EXPECT_EQ(keysMadeByListing(), 3);
    scan();
    EXPECT_EQ(keysMadeByListing(), 0);
  }
}

TEST_F(Relisting, OnlyNamesOfEqualSizesNeedKeys) {
  fileSystem_.addFile("/root/a", 1);
  fileSystem_.addFile("/root/b", 2);
  fileSystem_.addFile("/root/c", 2);
  EXPECT_EQ(keysMadeByListing(), 2);
  fileSystem_.addFile("/root/a", 2);
  EXPECT_EQ(keysMadeByListing(), 1) << "the one that is new among equals";
}

TEST_F(Relisting, CountedFilesAreNotLookedAtOnTheDiskButOthersAreEveryTime) {
  fileSystem_.addFile("/root/counted", 7);
  scan();
  fileSystem_.addFile("/root/new", 8);
  list();
  list();
  EXPECT_EQ(fileSystem_.attributeReads(), (std::vector<std::string>{"/root/new", "/root/new"}));
  fileSystem_.addFile("/root/new", 9);
  EXPECT_EQ(list().front().sizeBytes, 9);
}

TEST_F(Relisting, ASpecialFileStaysARowOfZeroThatNobodyLooksAt) {
  fileSystem_.addOther("/root/pipe");
  const Rows first = list();
  scan();
  EXPECT_EQ(list(), first);
  EXPECT_EQ(rowOf(rows_, "pipe"), (SweeperItem{FileUrl("/root/pipe"), "pipe", false, 0, false, false}));
  EXPECT_EQ(fileSystem_.attributeReads(), std::vector<std::string>());
}

TEST_F(Relisting, WhileAScanGoesOnFilesAndLinksAreLookedAtInTurn) {
  constexpr std::size_t kFiles = 100;
  for (std::size_t i = 0; i < kFiles; ++i) fileSystem_.addFile("/root/" + std::to_string(i), 7);
  fileSystem_.addFolder("/target");
  fileSystem_.addLink("/root/link", "../target");
  fileSystem_.addFile("/root/counted/file", 7);
  startScanOf("/root/counted");
  const auto looksOfListing = [this] {
    const std::size_t before = fileSystem_.attributeReads().size();
    list();
    return fileSystem_.attributeReads().size() - before;
  };
  EXPECT_EQ(looksOfListing(), kFiles);
  EXPECT_LE(looksOfListing(), 1U) << "no time has passed";
  for (std::size_t i = 0; i < kFiles; ++i) fileSystem_.addFile("/root/" + std::to_string(i), 9);
  fileSystem_.remove("/target");
  std::size_t looks = 0;
  for (int listing = 0; listing < 10; ++listing) {
    fileSystem_.advanceClock(LookRounds::kRound / 10);
    const std::size_t some = looksOfListing();
    EXPECT_LE(some, kFiles / 10 + 2);
    looks += some;
  }
  EXPECT_GE(looks, kFiles);
  EXPECT_EQ(rows_, listAnew());

  fileSystem_.advanceClock(LookRounds::kRound);
  EXPECT_EQ(looksOfListing(), kFiles);
  inventory_.scanComplete = true;
  EXPECT_EQ(looksOfListing(), kFiles);
  EXPECT_EQ(looksOfListing(), kFiles);
}

TEST_F(Relisting, FilesThatOnlyAnotherScanCountedAreLookedAtAtOnce) {
  const std::vector<std::string> files = {"/root/a", "/root/b", "/root/c", "/root/d"};
  for (const std::string& file : files) fileSystem_.addFile(file, 7);
  fileSystem_.addFile("/root/counted/file", 7);
  scan();
  list();
  for (const std::string& file : files) fileSystem_.addFile(file, 9);
  startScanOf("/root/counted");
  EXPECT_EQ(list(), listAnew());
}

TEST_F(Relisting, OtherNamesAreNotTakenForTheOldOnes) {
  // As many bytes in as many names, cut elsewhere.
  fileSystem_.setStamps(false);
  fileSystem_.addFile("/root/ab", 1);
  fileSystem_.addFile("/root/c", 1);
  list();
  fileSystem_.remove("/root/ab");
  fileSystem_.remove("/root/c");
  fileSystem_.addFile("/root/bc", 1);
  fileSystem_.addFile("/root/a", 1);
  EXPECT_EQ(list(), listAnew());
}

TEST_F(Relisting, AnEntryOfAnotherKindIsAnotherEntry) {
  for (const bool stamps : {true, false}) {
    fileSystem_.setStamps(stamps);
    fileSystem_.addFile("/root/a", 7);
    list();
    fileSystem_.addFolder("/root/a");
    EXPECT_TRUE(list().front().isDirectory);
    EXPECT_EQ(rows_, listAnew());
  }
}

TEST_F(Relisting, AnotherFolderIsListedAnew) {
  fileSystem_.addFile("/root/a", 7);
  fileSystem_.addFile("/other/a", 8);
  list();
  ASSERT_TRUE(listing_.list(fileSystem_, FileUrl("/other"), inventory_, rows_));
  EXPECT_EQ(rows_.front().url, FileUrl("/other/a"));
  EXPECT_EQ(rows_.front().sizeBytes, 8);
}

TEST_F(Relisting, RowsThatTheCallerThrewAwayComeAgain) {
  fileSystem_.addFile("/root/a", 7);
  fileSystem_.addFile("/root/b", 8);
  list();
  rows_.clear();
  EXPECT_EQ(list(), listAnew());
}

TEST_F(Relisting, AFailureLeavesNoRowsAndIsForgotten) {
  fileSystem_.addFile("/root/a", 7);
  list();
  fileSystem_.makeUnreadable("/root");
  EXPECT_FALSE(listing_.list(fileSystem_, FileUrl("/root"), inventory_, rows_));
  EXPECT_TRUE(rows_.empty());
  fileSystem_.makeReadable("/root");
  EXPECT_EQ(list(), listAnew());
}

TEST_F(Relisting, CountsOfAnotherScanDoNotStay) {
  fileSystem_.addFile("/root/a/file", 7);
  scan();
  EXPECT_EQ(list().front().sizeBytes, 7);
  fileSystem_.remove("/root/a/file");
  scan();
  EXPECT_EQ(list().front().sizeBytes, 0);
  const SweepInventory empty = SweepInventory::emptyFor(FileUrl("/root"));
  fileSystem_.addFile("/root/a/file", 9);
  scan();
  list();
  inventory_ = empty;
  EXPECT_EQ(list().front().sizeBytes, 0);
}

TEST_F(Relisting, GoesOnWhereTheListingWasMovedTo) {
  fileSystem_.addFile("/root/a/file", 7);
  fileSystem_.addFile("/root/b/file", 8);
  list();
  for (int move = 0; move < 2; ++move) {
    ColumnListing moved = std::move(listing_);
    listing_ = std::move(moved);
    scan();
    EXPECT_EQ(list(), listAnew());
    fileSystem_.addFile("/root/a/other", 9);
  }
}

TEST_F(Relisting, NumbersStayWithTheirRowsUntilTheFolderChanges) {
  fileSystem_.addFile("/root/a", 3);
  fileSystem_.addFile("/root/b", 2);
  fileSystem_.addFile("/root/c", 1);
  list();
  const std::uint64_t edition = listing_.numbers().edition;
  EXPECT_NE(edition, 0U);
  EXPECT_TRUE(std::ranges::equal(listing_.numbers().inOrder, std::vector<RowPosition>{0, 1, 2}));
  fileSystem_.addFile("/root/c", 4);
  list();
  EXPECT_EQ(listing_.numbers().edition, edition);
  EXPECT_TRUE(std::ranges::equal(listing_.numbers().inOrder, std::vector<RowPosition>{2, 0, 1}));
  fileSystem_.addFile("/root/d", 4);
  list();
  EXPECT_NE(listing_.numbers().edition, edition);
}

TEST_F(Relisting, TheRevisionTellsWhetherAnyRowHasChanged) {
  fileSystem_.addFile("/root/folder/file", 3);
  fileSystem_.addFile("/root/file", 2);
  scan();
  list();
  const auto changes = [this] {
    const std::uint64_t before = listing_.numbers().revision;
    list();
    return listing_.numbers().revision != before;
  };
  EXPECT_FALSE(changes());
  inventory_.hadReadErrors = true;
  EXPECT_TRUE(changes());
  EXPECT_FALSE(changes());
  fileSystem_.addFile("/root/folder/other", 3);
  scan();
  EXPECT_TRUE(changes());
  EXPECT_FALSE(changes());
}

// Whatever happens to the folder and to the scan, in steps between two listings.
TEST_F(Relisting, ListsAsAFreshListingWould) {
  std::mt19937_64 random(firstSeed());
  const auto below = [&random](std::size_t bound) { return static_cast<int>(random() % bound); };
  std::vector<SweepInventory> snapshots = {inventory_};
  const std::int64_t steps = rounds(4'000);
  for (std::int64_t step = 0; step < steps; ++step) {
    const std::string path = "/root/" + std::string(1, static_cast<char>('A' + below(40))) + std::to_string(below(2));
    fileSystem_.setStamps(below(8) != 0);
    try {
      switch (below(8)) {
        case 0:
          fileSystem_.remove(path);
          break;
        case 1:
          fileSystem_.addFile(path, below(3));
          break;
        case 2:
          fileSystem_.addFile(path + "/" + std::to_string(below(5)), below(3));
          break;
        case 3:
          fileSystem_.addLink(path, std::string(1, static_cast<char>('A' + below(40))) + "0");
          break;
        case 4: {
          snapshots = snapshotsOfEveryFile(fileSystem_, "/root");
          inventory_ = snapshots.front();
          break;
        }
        case 5:
          inventory_ = snapshots[random() % snapshots.size()];  // earlier, later, or the same
          break;
        default: {  // the next one, as it mostly is
          const auto isThis = [this](const SweepInventory& one) { return one.fileCount == inventory_.fileCount; };
          const auto next = std::ranges::find_if(snapshots, isThis) + 1;
          if (next < snapshots.end()) inventory_ = *next;
        }
      }
    } catch (const std::invalid_argument&) {  // no such entry
    }
    if (below(50) == 0) inventory_.hadReadErrors = true;
    fileSystem_.advanceClock(LookRounds::kRound);
    const Rows before = rows_;
    const std::uint64_t edition = listing_.numbers().edition;
    const std::uint64_t revision = listing_.numbers().revision;
    ASSERT_EQ(list(), listAnew()) << "step " << step;
    const bool isSameRevision = listing_.numbers().edition == edition && listing_.numbers().revision == revision;
    ASSERT_TRUE(rows_ == before || !isSameRevision) << "step " << step;
  }
}

}  // namespace
}  // namespace dunmere::test
