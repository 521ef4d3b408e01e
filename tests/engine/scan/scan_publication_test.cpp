// When a scan publishes what it has counted so far.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/engine/scan/scan_recording.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

using namespace std::chrono_literals;

class ScanPublication : public testing::Test {
 protected:
  void addFiles(const std::string& folder, int count, std::int64_t bytes = 512) {
    for (int i = 0; i < count; ++i) fileSystem_.addFile(folder + "/f" + std::to_string(i), bytes);
  }

  // The file counts of the snapshots of a scan of /r.
  std::vector<std::int64_t> publicationsOf(unsigned readers = 2) {
    fileSystem_.setClock(0ns);
    std::vector<std::int64_t> fileCounts;
    for (const SweepInventory& snapshot : recordScan(fileSystem_, "/r", {readers}).published)
      fileCounts.push_back(snapshot.fileCount);
    return fileCounts;
  }

  MemoryFileSystem fileSystem_;
};

using Counts = std::vector<std::int64_t>;

TEST_F(ScanPublication, EveryTwelveThousandthFilePublishes) {
  addFiles("/r/a", 11'999);
  addFiles("/r/b", 24'002);
  for (const unsigned readers : {0U, 2U}) EXPECT_EQ(publicationsOf(readers), (Counts{12'000, 24'000, 36'000, 36'001}));
}

TEST_F(ScanPublication, TwelveThousandthFileAsTheLastOnePublishesBeforeTheFinalSnapshot) {
  addFiles("/r/a", 12'000);
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  ASSERT_EQ(scan.published.size(), 2U);
  EXPECT_FALSE(scan.published[0].scanComplete);
  EXPECT_TRUE(scan.published[1].scanComplete);
  EXPECT_EQ(plain(scan.published[0]).entries, plain(scan.published[1]).entries);
}

TEST_F(ScanPublication, GiantFolderIsPublishedWhileItIsBeingCounted) {
  fileSystem_.setBatchSize(5'000);
  addFiles("/r/giant", 30'000, 1);
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  ASSERT_EQ(scan.published.size(), 3U);
  EXPECT_EQ(scan.published[0].pathBytes.find("/r"), 12'000);
  EXPECT_EQ(scan.published[0].pathBytes.find("/r/giant"), 12'000);
  EXPECT_EQ(scan.published[0].pathBytes.find("/r/giant/f11999"), 1);
  EXPECT_EQ(scan.published[0].pathBytes.find("/r/giant/f12000"), std::nullopt);
  EXPECT_EQ(scan.published[1].pathBytes.size(), 24'002);
}

TEST_F(ScanPublication, GiantFolderIsPublishedBeforeItHasBeenReadToItsEnd) {
  fileSystem_.setBatchSize(1'000);
  addFiles("/r/giant", 30'000);
  std::atomic<int> reads = 0;
  fileSystem_.onRead([&reads](const std::string& path) { reads += path == "/r/giant" ? 1 : 0; });
  std::vector<int> readsAtPublication;
  DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"),
                                      [&](const SweepInventory&) { readsAtPublication.push_back(reads); }, {0})
      .get();
  // Names are read one batch ahead.
  EXPECT_EQ(readsAtPublication, (std::vector<int>{13, 25, 31}));
}

TEST_F(ScanPublication, PublishesAtTheFileWhere350MillisecondsHavePassed) {
  // The clock is asked once at the start and once after each file.
  addFiles("/r/a", 8);
  fileSystem_.setClockStep(100ms);
  EXPECT_EQ(publicationsOf(), (Counts{4, 8, 8}));
  fileSystem_.setClockStep(175ms);
  EXPECT_EQ(publicationsOf(), (Counts{2, 4, 6, 8, 8}));
  fileSystem_.setClockStep(350ms);
  EXPECT_EQ(publicationsOf(), (Counts{1, 2, 3, 4, 5, 6, 7, 8, 8}));
  fileSystem_.setClockStep(43ms);
  EXPECT_EQ(publicationsOf(), (Counts{8}));
}

TEST_F(ScanPublication, JustUnder350MillisecondsPublishNothing) {
  addFiles("/r/a", 1);
  fileSystem_.setClockStep(350ms - 1ns);
  EXPECT_EQ(publicationsOf(), (Counts{1}));
}

TEST_F(ScanPublication, PublicationByCountStartsTheTimeAnew) {
  // 350 ms would have passed at 12,001 files counted from the start.
  addFiles("/r/a", 12'010);
  fileSystem_.setClockStep(350ms / 12'001 + 1ns);
  EXPECT_EQ(publicationsOf(), (Counts{12'000, 12'010}));
}

TEST_F(ScanPublication, TimeThatTheReceiverTakesCountsForTheNextPublication) {
  addFiles("/r/a", 12'003);
  Counts published;
  DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"), [&](const SweepInventory& snapshot) {
    published.push_back(snapshot.fileCount);
    fileSystem_.advanceClock(1s);
  }).get();
  EXPECT_EQ(published, (Counts{12'000, 12'001, 12'002, 12'003, 12'003}));
}

TEST_F(ScanPublication, FoldersAndLinksWithoutFilesPublishNothing) {
  for (int i = 0; i < 100; ++i) {
    fileSystem_.addFolder("/r/d" + std::to_string(i));
    fileSystem_.addLink("/r/l" + std::to_string(i), "/r");
  }
  fileSystem_.setClockStep(1s);
  EXPECT_EQ(publicationsOf(), (Counts{0}));
}

}  // namespace
}  // namespace dunmere::test
