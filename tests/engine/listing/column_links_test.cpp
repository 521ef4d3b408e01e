#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/engine/listing/column_rows.h"
#include "tests/engine/scan/scan_results.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/print_values.h"

namespace dunmere {
namespace {

using test::columnOf;
using test::inventoryOfScan;
using test::rowOf;
using test::snapshotsOfEveryFile;
using Strings = std::vector<std::string>;

constexpr std::int64_t kAbsent = EntryAttributes::kAbsent;

class ColumnLinks : public testing::Test {
 protected:
  /// The row of /root/link as listed with `inventory`.
  SweeperItem link(const SweepInventory& inventory) { return rowOf(columnOf(fileSystem_, "/root", inventory), "link"); }
  SweeperItem linkAfterScan() { return link(inventoryOfScan(fileSystem_, "/root")); }
  void addSizes(const std::string& path, std::int64_t allocated, std::int64_t logical) {
    fileSystem_.addFile(path, {EntryKind::regularFile, false, allocated, logical});
  }
  static SweeperItem folderLink(std::int64_t bytes, bool partial = false) {
    return {FileUrl("/root/link"), "link", true, bytes, partial, true};
  }
  static SweeperItem fileLink(std::int64_t bytes) { return {FileUrl("/root/link"), "link", false, bytes, false, true}; }
  static SweeperItem deadLink() { return fileLink(0); }

  test::MemoryFileSystem fileSystem_;
};

// Targets that cannot be read.

TEST_F(ColumnLinks, ADanglingLinkIsAPlainLinkOfZero) {
  for (const char* target : {"/nowhere", "nowhere", "file/below", "", "/root/nowhere/.."}) {
    fileSystem_.addFile("/root/file", 10);
    fileSystem_.addLink("/root/link", target);
    EXPECT_EQ(linkAfterScan(), deadLink()) << target;
  }
}

TEST_F(ColumnLinks, LinksThatLeadInACircleArePlainLinksOfZero) {
  fileSystem_.addLink("/root/link", "link");
  EXPECT_EQ(linkAfterScan(), deadLink());
  fileSystem_.addLink("/root/link", "other");
  fileSystem_.addLink("/root/other", "/root/link");
  EXPECT_EQ(linkAfterScan(), deadLink());
  EXPECT_EQ(rowOf(columnOf(fileSystem_, "/root", inventoryOfScan(fileSystem_, "/root")), "other").isSymbolicLink, true);
}

TEST_F(ColumnLinks, ATargetWithoutAttributesIsAPlainLinkOfZero) {
  fileSystem_.addFile("/root/folder/x", 10);
  fileSystem_.addLink("/root/link", "folder");
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  ASSERT_EQ(link(inventory), folderLink(10));
  fileSystem_.hideAttributes("/root/folder");
  EXPECT_EQ(link(inventory), deadLink());
}

TEST_F(ColumnLinks, ALinkWithoutAttributesOfItsOwnIsAPlainRowOfZero) {
  fileSystem_.addFile("/root/folder/x", 10);
  fileSystem_.addLink("/root/link", "folder");
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.hideAttributes("/root/link");
  EXPECT_EQ(link(inventory), (SweeperItem{FileUrl("/root/link"), "link", false, 0, false, false}));
}

TEST_F(ColumnLinks, ALinkToAPipeSocketOrDeviceIsAPlainLinkOfZero) {
  fileSystem_.addOther("/dev/tty");
  fileSystem_.addLink("/root/link", "/dev/tty");
  EXPECT_EQ(linkAfterScan(), deadLink());
}

// Targets that are folders.

TEST_F(ColumnLinks, ALinkToAFolderInsideTheTreeShowsThatFoldersSize) {
  fileSystem_.addFile("/root/a/b/x", 10);
  fileSystem_.addFile("/root/a/b/y", 30);
  fileSystem_.addLink("/root/link", "a/b");
  EXPECT_EQ(linkAfterScan(), folderLink(40));
}

TEST_F(ColumnLinks, ALinkToAFolderInTheSameColumnShowsTheSameBytesTwice) {
  fileSystem_.addFile("/root/folder/x", 10);
  fileSystem_.addLink("/root/link", "/root/folder");
  const auto rows = columnOf(fileSystem_, "/root", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(rowOf(rows, "folder").sizeBytes, 10);
  EXPECT_EQ(rowOf(rows, "link").sizeBytes, 10);
}

TEST_F(ColumnLinks, ALinkToTheScanRootOrAboveItIsSizedByItsKey) {
  fileSystem_.addFile("/root/x", 10);
  fileSystem_.addLink("/root/link", ".");
  EXPECT_EQ(linkAfterScan(), folderLink(10));
  fileSystem_.addLink("/root/link", "..");
  EXPECT_EQ(linkAfterScan(), folderLink(0));
  EXPECT_EQ(link(inventoryOfScan(fileSystem_, "/")), folderLink(10));
}

TEST_F(ColumnLinks, ALinkToAFolderOutsideTheTreeShowsZero) {
  fileSystem_.addFile("/elsewhere/x", 10);
  fileSystem_.addLink("/root/link", "/elsewhere");
  EXPECT_EQ(linkAfterScan(), folderLink(0));
}

TEST_F(ColumnLinks, ALinkToAFolderWithoutCountedFilesShowsZero) {
  fileSystem_.addFolder("/root/empty");
  fileSystem_.addLink("/root/link", "empty");
  EXPECT_EQ(linkAfterScan(), folderLink(0));
}

TEST_F(ColumnLinks, ALinkToAnUncountedFolderFallsBackToWhatItsOwnNameHeld) {
  fileSystem_.addFile("/root/link/x", 25);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.addFolder("/elsewhere");
  fileSystem_.addLink("/root/link", "/elsewhere");
  EXPECT_EQ(link(inventory), folderLink(25));
}

TEST_F(ColumnLinks, TheTargetsOwnSizeGoesBeforeWhatTheNameHeld) {
  fileSystem_.addFile("/root/link/x", 25);
  fileSystem_.addFile("/root/folder/x", 10);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.addLink("/root/link", "folder");
  EXPECT_EQ(link(inventory), folderLink(10));
}

TEST_F(ColumnLinks, LinksToFoldersCarryThePartialMark) {
  fileSystem_.addFile("/root/folder/x", 10);
  fileSystem_.addLink("/root/link", "folder");
  const auto snapshots = snapshotsOfEveryFile(fileSystem_, "/root");
  ASSERT_EQ(snapshots.size(), 2u);
  EXPECT_EQ(link(snapshots[0]), folderLink(10, true));
  EXPECT_EQ(link(snapshots[1]), folderLink(10, false));
}

TEST_F(ColumnLinks, LinksToFoldersCarryThePartialMarkAfterReadErrors) {
  fileSystem_.addFile("/root/folder/x", 10);
  fileSystem_.addLink("/root/link", "folder");
  fileSystem_.addFolder("/root/locked");
  fileSystem_.makeUnreadable("/root/locked");
  EXPECT_EQ(linkAfterScan(), folderLink(10, true));
}

// Targets that are regular files.

TEST_F(ColumnLinks, ALinkToAFileOutsideTheTreeShowsItsAllocatedSize) {
  addSizes("/elsewhere/file", 4096, 10);
  fileSystem_.addLink("/root/link", "/elsewhere/file");
  EXPECT_EQ(linkAfterScan(), fileLink(4096));
}

TEST_F(ColumnLinks, ALinkToAnUncountedFileShowsItsLengthWhenNoAllocatedSizeIsKnown) {
  fileSystem_.addLink("/root/link", "/elsewhere/file");
  addSizes("/elsewhere/file", kAbsent, 10);
  EXPECT_EQ(linkAfterScan(), fileLink(10));
  addSizes("/elsewhere/file", 0, 10);
  EXPECT_EQ(linkAfterScan(), fileLink(0));
  addSizes("/elsewhere/file", kAbsent, kAbsent);
  EXPECT_EQ(linkAfterScan(), fileLink(0));
}

TEST_F(ColumnLinks, ALinkToACountedFileShowsWhatWasCounted) {
  fileSystem_.addFile("/root/a/file", 100);
  fileSystem_.addLink("/root/link", "a/file");
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.addFile("/root/a/file", 9000);
  EXPECT_EQ(link(inventory), fileLink(100));
}

TEST_F(ColumnLinks, LinksIntoSeveralFoldersInAnyOrderAreEachSizedByTheirTarget) {
  std::int64_t bytes = 100;
  for (const std::string name : {"a/one", "a/two", "b/one", "b/two"}) fileSystem_.addFile("/root/" + name, bytes++);
  for (const std::string name : {"b/two", "a/two", "b/one", "a/one"}) {
    fileSystem_.addLink("/root/links/" + name.substr(0, 1) + name.substr(2), "../" + name);
  }
  const auto rows = columnOf(fileSystem_, "/root/links", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(rowOf(rows, "aone").sizeBytes, 100);
  EXPECT_EQ(rowOf(rows, "atwo").sizeBytes, 101);
  EXPECT_EQ(rowOf(rows, "bone").sizeBytes, 102);
  EXPECT_EQ(rowOf(rows, "btwo").sizeBytes, 103);
}

TEST_F(ColumnLinks, ALinkToAnUncountedFileFallsBackToWhatItsOwnNameHeld) {
  fileSystem_.addFile("/root/link", 55);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.addFile("/elsewhere/file", 4096);
  fileSystem_.addLink("/root/link", "/elsewhere/file");
  EXPECT_EQ(link(inventory), fileLink(55));
}

TEST_F(ColumnLinks, LinksToFilesNeverCarryThePartialMark) {
  fileSystem_.addFile("/root/a/file", 100);
  fileSystem_.addLink("/root/link", "a/file");
  EXPECT_EQ(link(snapshotsOfEveryFile(fileSystem_, "/root").front()), fileLink(100));
}

// Ways to the target.

TEST_F(ColumnLinks, ALinkThroughLinksIsSizedByWhereItEnds) {
  fileSystem_.addFile("/root/real/deep/file", 60);
  fileSystem_.addLink("/short", "/root/real");
  fileSystem_.addLink("/root/next", "../short/./deep/../deep");
  fileSystem_.addLink("/root/link", "next");
  EXPECT_EQ(linkAfterScan(), folderLink(60));
}

TEST_F(ColumnLinks, RelativeTargetsStartWhereTheLinkReallyLies) {
  fileSystem_.addFile("/root/real/file", 60);
  fileSystem_.addFile("/root/real/sub/other", 1);
  fileSystem_.addLink("/root/real/sub/link", "../file");
  fileSystem_.addLink("/root/alias", "real/sub");
  const auto rows = columnOf(fileSystem_, "/root/alias", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(rowOf(rows, "link"), (SweeperItem{FileUrl("/root/alias/link"), "link", false, 60, false, true}));
}

TEST_F(ColumnLinks, AColumnOpenedThroughALinkShowsFilesFromDiskAndFoldersAsZero) {
  fileSystem_.addFile("/root/real/file", 60);
  fileSystem_.addFile("/root/real/folder/x", 70);
  fileSystem_.addLink("/root/link", "real");
  const auto rows = columnOf(fileSystem_, "/root/link", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(rowOf(rows, "file").sizeBytes, 60);
  EXPECT_EQ(rowOf(rows, "folder").sizeBytes, 0);
  EXPECT_EQ(fileSystem_.attributeReads(), Strings{"/root/link/file"});
}

TEST_F(ColumnLinks, LinksOrderByTheSizeTheyShow) {
  fileSystem_.addFile("/elsewhere/large", 500);
  fileSystem_.addFile("/root/small", 10);
  fileSystem_.addLink("/root/link", "/elsewhere/large");
  fileSystem_.addFile("/root/huge", 1000);
  const auto rows = columnOf(fileSystem_, "/root", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(test::namesOf(rows), (Strings{"huge", "link", "small"}));
}

}  // namespace
}  // namespace dunmere
