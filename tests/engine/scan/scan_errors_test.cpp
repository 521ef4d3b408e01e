// Scans that meet what cannot be read, or cannot start at all.
#include <gtest/gtest.h>

#include <chrono>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/engine/scan/scan_recording.h"
#include "tests/support/child_process.h"
#include "tests/support/machine.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

using namespace std::chrono_literals;

class ScanErrors : public testing::Test {
 protected:
  void addFiles(const std::string& folder, int count) {
    for (int i = 0; i < count; ++i) fileSystem_.addFile(folder + "/f" + std::to_string(i), 512);
  }

  MemoryFileSystem fileSystem_;
};

TEST_F(ScanErrors, UnreadableSubfolderIsNotedAndTheRestIsCounted) {
  addFiles("/r/a", 1);
  addFiles("/r/locked", 5);
  addFiles("/r/z", 1);
  fileSystem_.makeUnreadable("/r/locked");
  EXPECT_EQ(
      plain(recordScan(fileSystem_, "/r").last()),
      (PlainSnapshot{
          {{"/r", 1'024}, {"/r/a", 512}, {"/r/a/f0", 512}, {"/r/z", 512}, {"/r/z/f0", 512}}, 2, 1'024, true, true}));
}

TEST_F(ScanErrors, ErrorShowsInEverySnapshotFromItsPlaceInTheWalkOn) {
  addFiles("/r/a", 3);
  addFiles("/r/locked", 1);
  addFiles("/r/z", 3);
  fileSystem_.makeUnreadable("/r/locked");
  fileSystem_.setClockStep(1s);
  for (const unsigned readers : {0U, 1U, 2U, 16U}) {
    std::vector<bool> hadReadErrors;
    for (const SweepInventory& snapshot : recordScan(fileSystem_, "/r", {readers}).published)
      hadReadErrors.push_back(snapshot.hadReadErrors);
    EXPECT_EQ(hadReadErrors, (std::vector<bool>{false, false, false, true, true, true, true})) << readers;
  }
}

TEST_F(ScanErrors, FolderThatFailsMidwayCountsWhatWasReadBefore) {
  addFiles("/r/a", 10);
  fileSystem_.addFile("/r/a/never reached", 1);
  fileSystem_.failReadingAfter("/r/a", 4);
  const PlainSnapshot last = plain(recordScan(fileSystem_, "/r").last());
  EXPECT_EQ(last.fileCount, 4);
  EXPECT_EQ(last.totalFileBytes, 4 * 512);
  EXPECT_TRUE(last.hadReadErrors);
}

TEST_F(ScanErrors, FolderThatWasRemovedAfterItWasListedIsNoReadError) {
  addFiles("/r/gone", 2);
  addFiles("/r/stays", 1);
  fileSystem_.onOpen([this](const std::string& path) {
    if (path == "/r/gone") fileSystem_.remove("/r/gone");
  });
  for (const unsigned readers : {0U, 2U}) {
    const PlainSnapshot last = plain(recordScan(fileSystem_, "/r", {readers}).last());
    EXPECT_EQ(last.fileCount, 1);
    EXPECT_FALSE(last.hadReadErrors);
    addFiles("/r/gone", 2);
  }
}

TEST_F(ScanErrors, WhatCannotBeReadWhereNothingTakesDiskSpaceIsNoReadError) {
  addFiles("/r/proc/1/fd", 1);
  addFiles("/r/proc/torn", 3);
  addFiles("/r/proc/unmeasurable", 1);
  addFiles("/r/z", 1);
  fileSystem_.makeUnreadable("/r/proc/1/fd");
  fileSystem_.failReadingAfter("/r/proc/torn", 2);
  fileSystem_.failMeasuring("/r/proc/unmeasurable");
  for (const std::string folder : {"/r/proc/1", "/r/proc/torn", "/r/proc/unmeasurable"})
    fileSystem_.takeNoDiskSpace(folder);
  const PlainSnapshot last = plain(recordScan(fileSystem_, "/r").last());
  EXPECT_EQ(last.fileCount, 3);
  EXPECT_FALSE(last.hadReadErrors);
}

TEST_F(ScanErrors, FolderSwappedForALinkAfterItWasListedIsNotFollowed) {
  fileSystem_.addFile("/r/d/f", 1);
  fileSystem_.addFile("/secret/f", 1'000);
  fileSystem_.onRead([this, swapped = false](const std::string& path) mutable {
    if (path != "/r" || std::exchange(swapped, true)) return;
    fileSystem_.remove("/r/d");
    fileSystem_.addLink("/r/d", "/secret");
  });
  const PlainSnapshot last = plain(recordScan(fileSystem_, "/r").last());
  EXPECT_EQ(last.totalFileBytes, 0);
  EXPECT_TRUE(last.hadReadErrors);
}

TEST_F(ScanErrors, UnreadableRootIsAnEmptyScanWithReadErrors) {
  addFiles("/r", 1);
  fileSystem_.makeUnreadable("/r");
  const RecordedScan scan = recordScan(fileSystem_, "/r");
  ASSERT_TRUE(scan.result);
  ASSERT_EQ(scan.published.size(), 1U);
  EXPECT_EQ(plain(scan.last()), (PlainSnapshot{{}, 0, 0, true, true}));
}

TEST_F(ScanErrors, RootThatFailsToBeReadIsAScanWithReadErrors) {
  addFiles("/r", 1);
  fileSystem_.failReadingAfter("/r", 0);
  EXPECT_EQ(plain(recordScan(fileSystem_, "/r").last()), (PlainSnapshot{{}, 0, 0, true, true}));
}

TEST_F(ScanErrors, MissingRootOrOneThatIsNoFolderFailsAndPublishesNothing) {
  fileSystem_.addFile("/file", 1);
  fileSystem_.addLink("/loop", "/loop");
  const std::vector<std::pair<std::string, std::errc>> cases = {{"/missing", std::errc::no_such_file_or_directory},
                                                                {"/file", std::errc::not_a_directory},
                                                                {"/loop", std::errc::too_many_symbolic_link_levels}};
  for (const auto& [root, code] : cases) {
    const RecordedScan scan = recordScan(fileSystem_, root);
    ASSERT_FALSE(scan.result) << root;
    EXPECT_EQ(scan.result.error(),
              (SweepError{SweepAttempt::startScan, FileUrl(root), std::make_error_code(code), {}}));
    EXPECT_TRUE(scan.published.empty());
  }
}

// A file system of which one folder takes the last memory.
class ExhaustedFileSystem : public MemoryFileSystem {
 public:
  explicit ExhaustedFileSystem(std::string path) {
    onOpen([path = std::move(path)](const std::string& opened) {
      if (opened == path) throw std::bad_alloc();
    });
  }
};

TEST_F(ScanErrors, RunningOutOfMemoryIsAnErrorValueWhoeverReads) {
  for (const std::string exhausted : {"/r", "/r/a/b"}) {
    for (const unsigned readers : {0U, 1U, 16U}) {
      ExhaustedFileSystem fileSystem(exhausted);
      fileSystem.addFile("/r/a/b/f", 1);
      for (int i = 0; i < 200; ++i) fileSystem.addFile("/r/a/" + std::to_string(i) + "/f", 1);
      const RecordedScan scan = recordScan(fileSystem, "/r", {readers});
      ASSERT_FALSE(scan.result);
      EXPECT_EQ(
          scan.result.error(),
          (SweepError{SweepAttempt::startScan, FileUrl("/r"), std::make_error_code(std::errc::not_enough_memory), {}}));
    }
  }
}

TEST_F(ScanErrors, ExceptionOfTheReceiverReachesTheCallerInsteadOfEndingTheProgram) {
  fileSystem_.addFolder("/r");
  auto result = DiskSweeperScan::runProgressiveScan(
      fileSystem_, FileUrl("/r"), [](const SweepInventory&) { throw std::runtime_error("receiver"); });
  EXPECT_THROW(result.get(), std::runtime_error);
}

TEST_F(ScanErrors, ThreadThatCannotBeStartedIsAnErrorValue) {
  DUNMERE_NEEDS(Feature::threadLimit);
  const ChildResult child = runInChild([this] {
    forbidThreads();
    fileSystem_.addFolder("/r");
    const RecordedScan scan = recordScan(fileSystem_, "/r");
    EXPECT_FALSE(scan.result);
    EXPECT_TRUE(scan.published.empty());
    if (scan.result) return 4;
    EXPECT_EQ(scan.result.error(), (SweepError{SweepAttempt::startScan,
                                               FileUrl("/r"),
                                               std::make_error_code(std::errc::resource_unavailable_try_again),
                                               {}}));
    return 0;
  });
  EXPECT_EQ(child.exitCode, 0) << child.output;
}

}  // namespace
}  // namespace dunmere::test
