// What a scan counts, and on which threads.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/engine/scan/scan_recording.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

using namespace std::chrono_literals;

class ProgressiveScan : public testing::Test {
 protected:
  void addFiles(const std::string& folder, int count, std::int64_t bytes = 512) {
    for (int i = 0; i < count; ++i) fileSystem_.addFile(folder + "/f" + std::to_string(i), bytes);
  }

  MemoryFileSystem fileSystem_;
};

// ---- What is counted ----

TEST_F(ProgressiveScan, EmptyFolderGivesOneFinalSnapshot) {
  fileSystem_.addFolder("/r");
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  ASSERT_EQ(scan.published.size(), 1U);
  EXPECT_EQ(plain(scan.last()), (PlainSnapshot{{}, 0, 0, false, true}));
  EXPECT_TRUE(scan.last().pathBytes.empty());
}

TEST_F(ProgressiveScan, FinalSnapshotIsAlsoTheResult) {
  addFiles("/r/a", 3);
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  ASSERT_TRUE(scan.result);
  EXPECT_EQ(plain(*scan.result), plain(scan.last()));
  EXPECT_TRUE(scan.result->scanComplete);
}

TEST_F(ProgressiveScan, RootIsKeptAsPassedAndItsKeyBesideIt) {
  fileSystem_.addFile("/r/s/f", 1);
  const RecordedScan scan = recordScan(fileSystem_, "/r//./s/");
  EXPECT_EQ(scan.last().root, FileUrl("/r//./s/"));
  EXPECT_EQ(scan.last().rootPath, "/r/s");
  EXPECT_EQ(plain(scan.last()).entries, (PlainMap{{"/r/s", 1}, {"/r/s/f", 1}}));
}

TEST_F(ProgressiveScan, FileCountsInEveryFolderUpToTheRootAndNothingAbove) {
  fileSystem_.addFile("/Users/a/b/c", 10);
  fileSystem_.addFile("/Users/a/d", 200);
  fileSystem_.addFile("/Users/e", 3'000);
  const RecordedScan scan = recordScan(fileSystem_, "/Users/a");
  EXPECT_EQ(
      plain(scan.last()),
      (PlainSnapshot{
          {{"/Users/a", 210}, {"/Users/a/b", 10}, {"/Users/a/b/c", 10}, {"/Users/a/d", 200}}, 2, 210, false, true}));
}

TEST_F(ProgressiveScan, RootFolderSumsToItselfAndTheClimbEndsThere) {
  fileSystem_.addFile("/Users/a/f", 1);
  fileSystem_.addFile("/g", 2);
  const RecordedScan scan = recordScan(fileSystem_, "/");
  EXPECT_EQ(scan.last().rootPath, "/");
  EXPECT_EQ(plain(scan.last()).entries,
            (PlainMap{{"/", 3}, {"/Users", 1}, {"/Users/a", 1}, {"/Users/a/f", 1}, {"/g", 2}}));
}

// The climb must not count characters: these names join with the slash or the name before them into one character, or
// are no characters at all.
TEST_F(ProgressiveScan, RootsAndNamesThatJoinIntoOneCharacterSumToTheRoot) {
  const std::vector<std::string> names = {"e\xcc\x81",    "\xcc\x81", "\xe0\xa4\x83", "\xd8\x80", "\xf0\x9f\x87\xa9",
                                          "\xe2\x80\x8d", "\r",       "\n",           "\xff",     "\xc3",
                                          "\xed\xa0\x80"};
  for (const std::string& rootName : names) {
    for (const std::string& name : names) {
      MemoryFileSystem fileSystem;
      const std::string root = "/" + rootName;
      fileSystem.addFile(root + "/" + name, 1);
      fileSystem.addFile(root + "/d/" + name + "/" + name, 2);
      const RecordedScan scan = recordScan(fileSystem, root);
      EXPECT_EQ(plain(scan.last()).entries, (PlainMap{{root, 3},
                                                      {root + "/" + name, 1},
                                                      {root + "/d", 2},
                                                      {root + "/d/" + name, 2},
                                                      {root + "/d/" + name + "/" + name, 2}}));
    }
  }
}

TEST_F(ProgressiveScan, PackagesAreNotEntered) {
  fileSystem_.addFile("/r/Photos.APP/inside/f", 1);
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  ASSERT_EQ(scan.published.size(), 1U);
  EXPECT_EQ(plain(scan.last()), (PlainSnapshot{{}, 0, 0, false, true}));
}

TEST_F(ProgressiveScan, FoldersThatTheSystemMarksAsPackagesAreNotEntered) {
  fileSystem_.addFile("/r/marked/f", 1);
  fileSystem_.addFile("/r/plain/f", 2);
  fileSystem_.markPackage("/r/marked");
  EXPECT_EQ(plain(recordScan(fileSystem_, "/r").last()).entries,
            (PlainMap{{"/r", 2}, {"/r/plain", 2}, {"/r/plain/f", 2}}));
}

TEST_F(ProgressiveScan, RootThatIsAPackageIsEntered) {
  fileSystem_.addFile("/Tool.app/f", 5);
  EXPECT_EQ(recordScan(fileSystem_, "/Tool.app").last().totalFileBytes, 5);
}

TEST_F(ProgressiveScan, FileOrLinkNamedLikeAPackageIsNone) {
  fileSystem_.addFile("/r/image.app", 5);
  fileSystem_.addLink("/r/link.app", "/r");
  EXPECT_EQ(plain(recordScan(fileSystem_, "/r").last()).entries, (PlainMap{{"/r", 5}, {"/r/image.app", 5}}));
}

TEST_F(ProgressiveScan, LinksAddNothing) {
  fileSystem_.addFile("/r/big/f", 1'000'000);
  fileSystem_.addLink("/r/link to folder", "/r/big");
  fileSystem_.addLink("/r/link to file", "/r/big/f");
  fileSystem_.addLink("/r/loop", "/r");
  fileSystem_.addLink("/r/dangling", "/nowhere");
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  EXPECT_EQ(
      plain(scan.last()),
      (PlainSnapshot{{{"/r", 1'000'000}, {"/r/big", 1'000'000}, {"/r/big/f", 1'000'000}}, 1, 1'000'000, false, true}));
}

TEST_F(ProgressiveScan, RootThatIsALinkToAFolderIsScannedUnderItsOwnPath) {
  fileSystem_.addFile("/real/f", 5);
  fileSystem_.addLink("/link", "/real");
  EXPECT_EQ(plain(recordScan(fileSystem_, "/link").last()).entries, (PlainMap{{"/link", 5}, {"/link/f", 5}}));
}

TEST_F(ProgressiveScan, SpecialFilesAddNothing) {
  fileSystem_.addOther("/r/pipe");
  EXPECT_EQ(plain(recordScan(fileSystem_, "/r").last()), (PlainSnapshot{{}, 0, 0, false, true}));
}

TEST_F(ProgressiveScan, AllocatedSizeCountsElseLogicalSizeElseNothing) {
  constexpr std::int64_t none = EntryAttributes::kAbsent;
  fileSystem_.addFile("/r/both", {EntryKind::regularFile, false, 4'096, 10});
  fileSystem_.addFile("/r/sparse", {EntryKind::regularFile, false, 0, 1'000});
  fileSystem_.addFile("/r/logical", {EntryKind::regularFile, false, none, 77});
  fileSystem_.addFile("/r/neither", {EntryKind::regularFile, false, none, none});
  const PlainSnapshot last = plain(recordScan(fileSystem_, "/r").last());
  EXPECT_EQ(last.entries,
            (PlainMap{{"/r", 4'173}, {"/r/both", 4'096}, {"/r/sparse", 0}, {"/r/logical", 77}, {"/r/neither", 0}}));
  EXPECT_EQ(last.fileCount, 4);
}

TEST_F(ProgressiveScan, FileWithoutReadableAttributesIsSkippedSilently) {
  addFiles("/r", 2);
  fileSystem_.hideAttributes("/r/f0");
  const PlainSnapshot last = plain(recordScan(fileSystem_, "/r").last());
  EXPECT_EQ(last.entries, (PlainMap{{"/r", 512}, {"/r/f1", 512}}));
  EXPECT_EQ(last.fileCount, 1);
  EXPECT_FALSE(last.hadReadErrors);
}

// ---- Threads ----

TEST_F(ProgressiveScan, ScanWaitsForTheReceiverOnOneThreadThatIsNotTheCallers) {
  addFiles("/r/a", 50);
  fileSystem_.setClockStep(1s);
  std::atomic<int> inside = 0;
  std::vector<std::thread::id> threads;
  DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"), [&](const SweepInventory&) {
    EXPECT_EQ(++inside, 1);
    threads.push_back(std::this_thread::get_id());
    std::this_thread::yield();
    --inside;
  }).get();
  ASSERT_EQ(threads.size(), 51U);
  for (const std::thread::id thread : threads) {
    EXPECT_EQ(thread, threads.front());
    EXPECT_NE(thread, std::this_thread::get_id());
  }
}

TEST_F(ProgressiveScan, ScanAndReadersRunAtUtilityPriority) {
  addFiles("/r/a", 1);
  recordScan(fileSystem_, "/r", {3});
  EXPECT_EQ(fileSystem_.utilityPriorityThreads(), 4);
}

TEST_F(ProgressiveScan, ReturnsAtOnceWhileTheScanGoesOn) {
  fileSystem_.addFolder("/r");
  std::promise<void> gate;
  std::shared_future<void> opened = gate.get_future().share();
  fileSystem_.onOpen([opened](const std::string&) { opened.wait(); });
  auto result = DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"), [](const SweepInventory&) {});
  EXPECT_EQ(result.wait_for(0s), std::future_status::timeout);
  gate.set_value();
  EXPECT_TRUE(result.get());
}

TEST_F(ProgressiveScan, CallbackIsGoneWhenTheResultIsThere) {
  fileSystem_.addFolder("/r");
  for (const char* root : {"/r", "/missing"}) {
    std::atomic<bool> gone = false;
    // Slow to go, so that a result that came first would be seen.
    std::shared_ptr<int> owned(new int, [&gone](const int* number) {
      std::this_thread::sleep_for(50ms);
      delete number;
      gone = true;
    });
    const auto result = DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl(root),
                                                            [owned = std::move(owned)](const SweepInventory&) {});
    result.wait();
    EXPECT_TRUE(gone);
    while (!gone) std::this_thread::yield();
  }
}

// ---- Readers and shapes ----

TEST_F(ProgressiveScan, ResultsDoNotDependOnTheNumberOfReaders) {
  for (int i = 0; i < 500; ++i) {
    const std::string folder = "/r/" + std::to_string(i % 7) + "/" + std::to_string(i % 60) + "/" + std::to_string(i);
    fileSystem_.addFolder(folder);
    addFiles(folder, i % 9, i);
    if (i % 11 == 0) fileSystem_.makeUnreadable(folder);
    if (i % 13 == 0) fileSystem_.failReadingAfter(folder, 3);
  }
  fileSystem_.setClockStep(7ms);
  const auto scanWith = [this](unsigned readers) {
    fileSystem_.setClock(0ns);
    return recordScan(fileSystem_, "/r", {readers}).whenPublished;
  };
  const std::vector<PlainSnapshot> alone = scanWith(0);
  ASSERT_GT(alone.size(), 20U);
  for (const unsigned readers : {1U, 2U, 16U}) EXPECT_EQ(scanWith(readers), alone) << readers;
}

TEST_F(ProgressiveScan, VeryDeepTreeIsScanned) {
  constexpr int kDepth = 20'000;
  std::string path = "/r";
  for (int i = 0; i < kDepth; ++i) path += "/d";
  fileSystem_.addFile(path + "/f", 7);
  for (const unsigned readers : {0U, 4U}) {
    const auto result =
        DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"), [](const SweepInventory&) {}, {readers}).get();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->pathBytes.size(), kDepth + 2);
    EXPECT_EQ(result->pathBytes.find("/r"), 7);
    EXPECT_EQ(result->pathBytes.find(path), 7);
    EXPECT_FALSE(result->hadReadErrors);
  }
}

TEST_F(ProgressiveScan, FolderOfManyFoldersIsScanned) {
  constexpr int kFolders = 30'000;
  for (int i = 0; i < kFolders; ++i) fileSystem_.addFile("/r/" + std::to_string(i) + "/f", 1);
  fileSystem_.setBatchSize(1'000);
  for (const unsigned readers : {0U, 4U}) {
    const auto result =
        DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"), [](const SweepInventory&) {}, {readers}).get();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->pathBytes.size(), 2 * kFolders + 1);
    EXPECT_EQ(result->totalFileBytes, kFolders);
  }
}

TEST_F(ProgressiveScan, ManyScansMayRunAtATime) {
  for (int i = 0; i < 100; ++i) addFiles("/r/" + std::to_string(i), 10);
  std::vector<std::future<DiskSweeperScan::ScanResult>> scans;
  for (int i = 0; i < 8; ++i)
    scans.push_back(DiskSweeperScan::runProgressiveScan(fileSystem_, FileUrl("/r"), [](const SweepInventory&) {}));
  for (auto& scan : scans) EXPECT_EQ(scan.get()->fileCount, 1'000);
}

}  // namespace
}  // namespace dunmere::test
