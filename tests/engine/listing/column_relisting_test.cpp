// A column that is listed again shows what a fresh listing would, and does not do again what need not be done.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "engine/listing/column_listing.h"
#include "tests/engine/listing/column_rows.h"
#include "tests/engine/scan/scan_results.h"
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
    const auto looks = inventory_.scanComplete ? ColumnListing::Looks::all : ColumnListing::Looks::some;
    shown_ = listing_->list(fileSystem_, inventory_, looks).value();
    return rows_ = shown_.items();
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
  std::optional<ColumnListing> listing_{FileUrl("/root")};
  ColumnRows shown_;
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
    listing_.emplace(FileUrl("/root"));
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

// What looks at the disk cost is bounded while a scan goes on, and after it each listing looks at all.
TEST_F(Relisting, WhileAScanGoesOnUncountedFilesAreLookedAtInTurn) {
  constexpr std::int64_t kFiles = 4 * ColumnListing::kLeastLooks;
  fileSystem_.setBatchSize(1000);
  for (std::int64_t i = 0; i < kFiles; ++i) fileSystem_.addFile("/root/" + std::to_string(i), 7);
  fileSystem_.addFile("/root/counted/file", 7);
  startScanOf("/root/counted");
  const auto looksOfListing = [this] {
    const std::size_t before = fileSystem_.attributeReads().size();
    list();
    return static_cast<std::int64_t>(fileSystem_.attributeReads().size() - before);
  };
  for (int listing = 1; listing <= 4; ++listing) {
    EXPECT_EQ(looksOfListing(), ColumnListing::kLeastLooks);
    EXPECT_EQ(listing_->hasUnseen(), listing < 4);
  }
  EXPECT_EQ(rows_, listAnew());
  fileSystem_.advanceClock(std::chrono::milliseconds(100));
  EXPECT_EQ(looksOfListing(), ColumnListing::kLooksPerSecond / 10);
  inventory_.scanComplete = true;
  EXPECT_EQ(looksOfListing(), kFiles);
  EXPECT_EQ(looksOfListing(), kFiles);
}

TEST_F(Relisting, LooksThatTakeLongAreBrokenOffAndGoneOnWith) {
  for (int i = 0; i < 100; ++i) fileSystem_.addFile("/root/" + std::to_string(i), 7);
  fileSystem_.setClockStep(ColumnListing::kLongestLook);
  list();
  EXPECT_LT(fileSystem_.attributeReads().size(), 50U);
  EXPECT_TRUE(listing_->hasUnseen());
  for (int listing = 0; listing < 100 && listing_->hasUnseen(); ++listing) list();
  EXPECT_FALSE(listing_->hasUnseen());
  EXPECT_EQ(rows_, listAnew());
}

TEST_F(Relisting, WhatWasSeenStaysKnownWhenTheFolderChanges) {
  for (int i = 0; i < 100; ++i) fileSystem_.addFile("/root/" + std::to_string(i), 7);
  fileSystem_.addFile("/root/z", 3);
  fileSystem_.addLink("/root/link", "z");
  list();
  fileSystem_.remove("/root/50");
  fileSystem_.setClockStep(ColumnListing::kLongestLook);
  EXPECT_EQ(list(), listAnew());
}

TEST_F(Relisting, ALinkWithoutAnAnswerHasNoTargetUntilItComes) {
  fileSystem_.addFile("/root/file", 7);
  fileSystem_.addLink("/root/link", "file");
  ColumnListing::LinkTargets answers;
  const auto noAnswer = [&](const auto& folder, const auto& names) {
    if (!names.empty()) answers = ColumnListing::waitForLinks(folder, names);
    return ColumnListing::LinkTargets();
  };
  const auto lateAnswer = [&](const auto&, const auto&) { return answers; };
  auto rows = listing_->list(fileSystem_, inventory_, ColumnListing::Looks::some, noAnswer).value().items();
  EXPECT_EQ(rowOf(rows, "link"), (SweeperItem{FileUrl("/root/link"), "link", false, 0, false, true}));
  EXPECT_EQ(rowOf(rows, "file").sizeBytes, 7);
  EXPECT_FALSE(listing_->hasUnseen());
  rows = listing_->list(fileSystem_, inventory_, ColumnListing::Looks::some, lateAnswer).value().items();
  EXPECT_EQ(rowOf(rows, "link").sizeBytes, 7);
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

TEST_F(Relisting, AFailureLeavesNoRowsAndIsForgotten) {
  fileSystem_.addFile("/root/a", 7);
  list();
  fileSystem_.makeUnreadable("/root");
  EXPECT_FALSE(listing_->list(fileSystem_, inventory_));
  fileSystem_.makeReadable("/root");
  EXPECT_EQ(list(), listAnew());
  EXPECT_EQ(shown_.changes().since, 0U) << "there were no rows before";
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

TEST_F(Relisting, TheGenerationTellsWhetherAnyRowHasChanged) {
  fileSystem_.addFile("/root/folder/file", 3);
  fileSystem_.addFile("/root/file", 2);
  scan();
  list();
  const auto changes = [this] {
    const std::uint64_t before = shown_.generation();
    list();
    return shown_.generation() != before;
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

TEST_F(Relisting, RowsThatAreShownAlreadyAreWhereTheChangesBegin) {
  fileSystem_.addFile("/root/a", 3);
  fileSystem_.addFile("/root/b", 2);
  list();
  const ColumnRows shown = shown_;
  fileSystem_.addFile("/root/c", 1);
  listing_.emplace(FileUrl("/root"), shown);
  list();
  EXPECT_EQ(shown_.changes().since, shown.generation());
  EXPECT_EQ(shown_.changes().steps, (std::vector{ListChange{ListChange::Kind::insert, 2, 1, 2}}));
}

/// The names of `rows` once the changes to `next` are applied.
std::vector<std::string> applied(const std::vector<std::string>& rows, const ColumnRows& next) {
  std::vector<std::string> result;
  const auto at = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
  if (!next.changes().steps) {
    for (std::size_t row = 0; row < next.size(); ++row) {
      const std::size_t old = next.changes().match.oldIndex[row];
      result.push_back(old == ListMatch::kNew ? std::string(next.name(row)) : rows[old]);
    }
    return result;
  }
  result = rows;
  for (const ListChange& step : *next.changes().steps) {
    if (step.kind == ListChange::Kind::remove) {
      result.erase(result.begin() + at(step.position), result.begin() + at(step.position + step.count));
    } else if (step.kind == ListChange::Kind::move) {
      const std::string moved = result[step.position];
      result.erase(result.begin() + at(step.position));
      result.insert(result.begin() + at(step.target), moved);
    } else {
      for (std::size_t i = 0; i < step.count; ++i)
        result.insert(result.begin() + at(step.position + i), std::string(next.name(step.target + i)));
    }
  }
  return result;
}

/// Whether the row at `index` is told to show something else.
bool isToldAnew(const ColumnRows& rows, std::size_t index) {
  return std::ranges::any_of(rows.changes().shownAnew,
                             [index](const auto& run) { return run.first <= index && index <= run.second; });
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
    fileSystem_.setClockStep({});  // no look takes long
    const Rows before = rows_;
    const ColumnRows shownBefore = shown_;
    ASSERT_EQ(list(), listAnew()) << "step " << step;
    ASSERT_TRUE(rows_ == before || shown_.generation() != shownBefore.generation()) << "step " << step;
    if (shown_.generation() == shownBefore.generation()) continue;
    ASSERT_EQ(shown_.changes().since, shownBefore.generation());
    ASSERT_EQ(applied(namesOf(before), shown_), namesOf(rows_)) << "step " << step;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      const auto old = std::ranges::find(before, rows_[row].name, &SweeperItem::name);
      ASSERT_TRUE(old == before.end() || *old == rows_[row] || isToldAnew(shown_, row)) << "step " << step;
    }
  }
}

}  // namespace
}  // namespace dunmere::test
