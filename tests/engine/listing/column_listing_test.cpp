#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
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
using test::namesOf;
using test::rowOf;
using test::snapshotsOfEveryFile;
using Strings = std::vector<std::string>;

constexpr std::int64_t kAbsent = EntryAttributes::kAbsent;

class ColumnListing : public testing::Test {
 protected:
  std::vector<SweeperItem> column(const SweepInventory& inventory) { return columnOf(fileSystem_, "/root", inventory); }
  std::vector<SweeperItem> scannedColumn() { return column(inventoryOfScan(fileSystem_, "/root")); }
  std::vector<SweeperItem> unscannedColumn() { return column(SweepInventory::emptyFor(FileUrl("/root"))); }
  std::error_code errorOf(const std::string& parent) {
    const auto rows =
        DiskSweeperScan::columnChildren(fileSystem_, FileUrl(parent), SweepInventory::emptyFor(FileUrl("/root")));
    return rows ? std::error_code() : rows.error().code;
  }
  void addSizes(const std::string& path, std::int64_t allocated, std::int64_t logical) {
    fileSystem_.addFile(path, {EntryKind::regularFile, false, allocated, logical});
  }

  test::MemoryFileSystem fileSystem_;
};

// Kinds of rows.

TEST_F(ColumnListing, ARowIsTheListedChild) {
  fileSystem_.addFile("/root/movie.mov", 700);
  fileSystem_.addFile("/root/photos/a", 30);
  EXPECT_EQ(scannedColumn(),
            (std::vector<SweeperItem>{{FileUrl("/root/movie.mov"), "movie.mov", false, 700, false, false},
                                      {FileUrl("/root/photos"), "photos", true, 30, false, false}}));
}

TEST_F(ColumnListing, AFolderShowsTheSumOfAllBelowIt) {
  fileSystem_.addFile("/root/a/x", 1);
  fileSystem_.addFile("/root/a/b/y", 20);
  fileSystem_.addFile("/root/a/b/c/z", 300);
  EXPECT_EQ(rowOf(scannedColumn(), "a").sizeBytes, 321);
}

TEST_F(ColumnListing, TheScanRootShowsItsSumInTheColumnAboveIt) {
  fileSystem_.addFile("/root/a/x", 1);
  fileSystem_.addFile("/other/y", 20);
  const auto rows = columnOf(fileSystem_, "/", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(rowOf(rows, "root").sizeBytes, 1);
  EXPECT_EQ(rowOf(rows, "other").sizeBytes, 0);
}

TEST_F(ColumnListing, AFolderWithoutStoredSizeShowsZero) {
  fileSystem_.addFolder("/root/empty");
  fileSystem_.addLink("/root/links/link", "/root/full/file");
  fileSystem_.addFile("/root/full/file", 5);
  const auto rows = scannedColumn();
  EXPECT_EQ(rowOf(rows, "empty").sizeBytes, 0);
  EXPECT_EQ(rowOf(rows, "links").sizeBytes, 0);
  EXPECT_EQ(rowOf(unscannedColumn(), "full").sizeBytes, 0);
}

TEST_F(ColumnListing, AFilesStoredSizeOutlivesAChangeOnDisk) {
  fileSystem_.addFile("/root/log", 100);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.addFile("/root/log", 9000);
  EXPECT_EQ(rowOf(column(inventory), "log").sizeBytes, 100);
}

TEST_F(ColumnListing, AStoredSizeOfZeroIsASize) {
  fileSystem_.addFile("/root/log", 0);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  fileSystem_.addFile("/root/log", 9000);
  EXPECT_EQ(rowOf(column(inventory), "log").sizeBytes, 0);
}

TEST_F(ColumnListing, AnUncountedFileShowsItsAllocatedSizeElseItsLengthElseZero) {
  addSizes("/root/both", 4096, 10);
  addSizes("/root/lengthOnly", kAbsent, 10);
  addSizes("/root/sparse", 0, 10);
  addSizes("/root/neither", kAbsent, kAbsent);
  const auto rows = unscannedColumn();
  EXPECT_EQ(rowOf(rows, "both").sizeBytes, 4096);
  EXPECT_EQ(rowOf(rows, "lengthOnly").sizeBytes, 10);
  EXPECT_EQ(rowOf(rows, "sparse").sizeBytes, 0);
  EXPECT_EQ(rowOf(rows, "neither").sizeBytes, 0);
}

TEST_F(ColumnListing, AFileThatVanishesWhileItIsListedShowsZero) {
  fileSystem_.addFile("/root/gone", 4096);
  fileSystem_.onRead([this](const std::string&) { fileSystem_.hideAttributes("/root/gone"); });
  EXPECT_EQ(unscannedColumn(), (std::vector<SweeperItem>{{FileUrl("/root/gone"), "gone", false, 0, false, false}}));
}

TEST_F(ColumnListing, AFileThatBecomesALinkWhileItIsListedShowsZero) {
  fileSystem_.addFile("/root/file", 4096);
  fileSystem_.onRead([this](const std::string&) { fileSystem_.addLink("/root/file", "elsewhere"); });
  EXPECT_EQ(unscannedColumn(), (std::vector<SweeperItem>{{FileUrl("/root/file"), "file", false, 0, false, false}}));
}

TEST_F(ColumnListing, AnEntryWithoutAttributesIsAPlainRowOfZero) {
  fileSystem_.addFile("/root/file", 100);
  fileSystem_.addFile("/root/folder/x", 100);
  const SweepInventory inventory = snapshotsOfEveryFile(fileSystem_, "/root").front();
  fileSystem_.hideAttributes("/root/file");
  fileSystem_.hideAttributes("/root/folder");
  EXPECT_EQ(column(inventory), (std::vector<SweeperItem>{{FileUrl("/root/file"), "file", false, 0, false, false},
                                                         {FileUrl("/root/folder"), "folder", false, 0, false, false}}));
}

TEST_F(ColumnListing, PipesSocketsAndDevicesArePlainRowsOfZero) {
  fileSystem_.addOther("/root/pipe");
  EXPECT_EQ(unscannedColumn(), (std::vector<SweeperItem>{{FileUrl("/root/pipe"), "pipe", false, 0, false, false}}));
}

TEST_F(ColumnListing, HiddenEntriesAreListed) {
  fileSystem_.addFile("/root/.profile", 10);
  fileSystem_.addFile("/root/.cache/x", 20);
  EXPECT_EQ(namesOf(scannedColumn()), (Strings{".cache", ".profile"}));
}

TEST_F(ColumnListing, AnEmptyFolderGivesAnEmptyList) {
  fileSystem_.addFolder("/root");
  EXPECT_EQ(scannedColumn(), std::vector<SweeperItem>());
}

TEST_F(ColumnListing, APackageShowsZeroAfterATenByteFile) {
  fileSystem_.addFile("/root/Mail.app/Contents/binary", 5000);
  fileSystem_.addFile("/root/note", 10);
  EXPECT_EQ(scannedColumn(),
            (std::vector<SweeperItem>{{FileUrl("/root/note"), "note", false, 10, false, false},
                                      {FileUrl("/root/Mail.app"), "Mail.app", true, 0, false, false}}));
}

TEST_F(ColumnListing, AFolderMarkedAsPackageShowsZero) {
  fileSystem_.addFile("/root/document/part", 5000);
  fileSystem_.markPackage("/root/document");
  EXPECT_EQ(scannedColumn(),
            (std::vector<SweeperItem>{{FileUrl("/root/document"), "document", true, 0, false, false}}));
}

TEST_F(ColumnListing, NoEntryIsLeftOut) {
  fileSystem_.setBatchSize(7);
  for (int i = 0; i < 5000; ++i) fileSystem_.addFile("/root/" + std::to_string(i), i);
  const auto rows = scannedColumn();
  ASSERT_EQ(rows.size(), 5000u);
  for (int i = 0; i < 5000; ++i) EXPECT_EQ(rows[static_cast<std::size_t>(i)].name, std::to_string(4999 - i));
}

TEST_F(ColumnListing, NamesAreRawBytes) {
  const std::string name = "caf\xe9\n\xff";
  fileSystem_.addFile("/root/" + name, 10);
  const auto rows = scannedColumn();
  EXPECT_EQ(rows, (std::vector<SweeperItem>{{FileUrl("/root/" + name), name, false, 10, false, false}}));
}

// The partial mark.

TEST_F(ColumnListing, ARunningScanMarksEveryFolderRow) {
  fileSystem_.addFile("/root/file", 1);
  fileSystem_.addFile("/root/counted/x", 2);
  fileSystem_.addFile("/root/later/y", 3);
  fileSystem_.addFolder("/root/empty");
  const auto snapshots = snapshotsOfEveryFile(fileSystem_, "/root");
  ASSERT_EQ(snapshots.size(), 4u);
  for (std::size_t i = 0; i < 3; ++i) {
    for (const SweeperItem& row : column(snapshots[i]))
      EXPECT_EQ(row.sizeIsPartialMinimum, row.isDirectory) << row.name;
  }
}

TEST_F(ColumnListing, ACompleteScanWithoutReadErrorsMarksNothing) {
  fileSystem_.addFile("/root/file", 1);
  fileSystem_.addFile("/root/counted/x", 2);
  fileSystem_.addFolder("/root/empty");
  const auto rows = scannedColumn();
  EXPECT_EQ(rows.size(), 3u);
  for (const SweeperItem& row : rows) EXPECT_FALSE(row.sizeIsPartialMinimum) << row.name;
}

TEST_F(ColumnListing, ACompleteScanWithReadErrorsMarksEveryFolderRow) {
  fileSystem_.addFile("/root/file", 1);
  fileSystem_.addFile("/root/whole/x", 2);
  fileSystem_.addFile("/root/part/locked/y", 2);
  fileSystem_.makeUnreadable("/root/part/locked");
  const auto rows = scannedColumn();
  EXPECT_TRUE(rowOf(rows, "whole").sizeIsPartialMinimum);
  EXPECT_TRUE(rowOf(rows, "part").sizeIsPartialMinimum);
  EXPECT_FALSE(rowOf(rows, "file").sizeIsPartialMinimum);
}

TEST_F(ColumnListing, TheInventoryBeforeAScanMarksEveryFolderRow) {
  fileSystem_.addFolder("/root/folder");
  fileSystem_.addFile("/root/file", 1);
  EXPECT_TRUE(rowOf(unscannedColumn(), "folder").sizeIsPartialMinimum);
  EXPECT_FALSE(rowOf(unscannedColumn(), "file").sizeIsPartialMinimum);
}

TEST_F(ColumnListing, FolderSizesGrowFromSnapshotToSnapshot) {
  for (int i = 0; i < 4; ++i) fileSystem_.addFile("/root/folder/" + std::to_string(i), 10);
  std::vector<std::int64_t> sizes;
  for (const SweepInventory& snapshot : snapshotsOfEveryFile(fileSystem_, "/root")) {
    sizes.push_back(rowOf(column(snapshot), "folder").sizeBytes);
  }
  EXPECT_EQ(sizes, (std::vector<std::int64_t>{10, 20, 30, 40, 40}));
}

// Keys.

TEST_F(ColumnListing, TheSpellingOfTheParentDoesNotMatterForSizes) {
  fileSystem_.addFile("/root/a/file", 10);
  fileSystem_.addFolder("/root/b");
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  for (const char* parent : {"/root/a", "/root/a/", "/root//a", "/root/./a", "/root/b/../a", "/../root/a"}) {
    fileSystem_.addFile("/root/a/file", 777);
    EXPECT_EQ(rowOf(columnOf(fileSystem_, parent, inventory), "file").sizeBytes, 10) << parent;
  }
}

TEST_F(ColumnListing, ARowsUrlIsTheParentAsGivenAndTheName) {
  fileSystem_.addFile("/root/a/file", 10);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  EXPECT_EQ(columnOf(fileSystem_, "/root/a/", inventory).front().url, FileUrl("/root/a/file"));
  EXPECT_EQ(columnOf(fileSystem_, "/root/./a", inventory).front().url, FileUrl("/root/./a/file"));
}

TEST_F(ColumnListing, TheRootFolderItselfCanBeListed) {
  fileSystem_.addFile("/usr/lib/x", 10);
  fileSystem_.addFile("/swap", 20);
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/");
  EXPECT_EQ(columnOf(fileSystem_, "/", inventory),
            (std::vector<SweeperItem>{{FileUrl("/swap"), "swap", false, 20, false, false},
                                      {FileUrl("/usr"), "usr", true, 10, false, false}}));
}

TEST_F(ColumnListing, AFolderOutsideTheScannedTreeShowsWhatTheDiskSays) {
  fileSystem_.addFile("/root/x", 10);
  fileSystem_.addFile("/elsewhere/file", 30);
  fileSystem_.addFile("/elsewhere/folder/y", 40);
  const auto rows = columnOf(fileSystem_, "/elsewhere", inventoryOfScan(fileSystem_, "/root"));
  EXPECT_EQ(rowOf(rows, "file").sizeBytes, 30);
  EXPECT_EQ(rowOf(rows, "folder").sizeBytes, 0);
}

// Order.

TEST_F(ColumnListing, LargestFirst) {
  fileSystem_.addFile("/root/a", 10);
  fileSystem_.addFile("/root/b/x", 300);
  fileSystem_.addFile("/root/c", 200);
  fileSystem_.addFolder("/root/d");
  EXPECT_EQ(namesOf(scannedColumn()), (Strings{"b", "c", "a", "d"}));
}

TEST_F(ColumnListing, SizesBeyondThirtyTwoBitsOrderRightly) {
  fileSystem_.addFile("/root/small", 2'000'000'000);
  fileSystem_.addFile("/root/large", 5'000'000'000'000);
  fileSystem_.addFile("/root/middle", 4'294'967'297);
  EXPECT_EQ(namesOf(scannedColumn()), (Strings{"large", "middle", "small"}));
}

TEST_F(ColumnListing, EqualFoldersOrderByNameWithoutRegardToCase) {
  fileSystem_.addFile("/root/gamma/x", 50);
  fileSystem_.addFile("/root/alpha/x", 50);
  fileSystem_.addFile("/root/Beta/x", 50);
  EXPECT_EQ(namesOf(scannedColumn()), (Strings{"alpha", "Beta", "gamma"}));
}

TEST_F(ColumnListing, EveryRunOfEqualSizesOrdersByName) {
  for (const char* path : {"/root/z", "/root/m", "/root/b"}) fileSystem_.addFile(path, 30);
  for (const char* path : {"/root/y", "/root/c"}) fileSystem_.addFile(path, 20);
  fileSystem_.addFile("/root/x", 25);
  for (const char* path : {"/root/w", "/root/a"}) fileSystem_.addFile(path, 0);
  EXPECT_EQ(namesOf(scannedColumn()), (Strings{"b", "m", "z", "x", "c", "y", "a", "w"}));
}

TEST_F(ColumnListing, EqualSizesAndNamesKeepTheListingOrder) {
  for (const char* name : {"readme", "README", "Alpha", "ReadMe", "alpha"}) {
    fileSystem_.addFile(std::string("/root/") + name, 8);
  }
  EXPECT_EQ(namesOf(scannedColumn()), (Strings{"Alpha", "alpha", "readme", "README", "ReadMe"}));
}

// Failures.

TEST_F(ColumnListing, AFolderThatCannotBeOpenedFailsWithItsError) {
  fileSystem_.addFile("/root/file", 1);
  fileSystem_.addFolder("/root/locked");
  fileSystem_.makeUnreadable("/root/locked");
  EXPECT_EQ(errorOf("/root/missing"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("/root/file"), std::errc::not_a_directory);
  EXPECT_EQ(errorOf("/root/locked"), std::errc::permission_denied);
}

TEST_F(ColumnListing, TheFailureNamesTheFolderAndTheAttempt) {
  const auto rows = DiskSweeperScan::columnChildren(fileSystem_, FileUrl("/root/missing"),
                                                    SweepInventory::emptyFor(FileUrl("/root")));
  ASSERT_FALSE(rows);
  EXPECT_EQ(rows.error(), (SweepError{SweepAttempt::openFolder, FileUrl("/root/missing"),
                                      std::make_error_code(std::errc::no_such_file_or_directory), ""}));
}

TEST_F(ColumnListing, AnErrorMidwayFailsTheWholeColumn) {
  for (const char* path : {"/root/a", "/root/b", "/root/c", "/root/d", "/root/e"}) fileSystem_.addFile(path, 1);
  fileSystem_.failReadingAfter("/root", 4);
  EXPECT_EQ(errorOf("/root"), std::errc::io_error);
  fileSystem_.failReadingAfter("/root", 5);
  EXPECT_EQ(errorOf("/root"), std::errc::io_error);
}

// What it costs.

/// Remembers the names it was asked to make keys of.
class KeyCountingFileSystem : public test::MemoryFileSystem {
 public:
  std::string nameSortKey(std::string_view name) override {
    keyed.emplace_back(name);
    return MemoryFileSystem::nameSortKey(name);
  }
  Strings keyed;
};

TEST_F(ColumnListing, CountedFilesAreNotLookedAtOnDisk) {
  for (int i = 0; i < 100; ++i) fileSystem_.addFile("/root/" + std::to_string(i), i);
  fileSystem_.addFile("/root/folder/x", 5);
  fileSystem_.addLink("/root/link", "folder");
  const SweepInventory inventory = inventoryOfScan(fileSystem_, "/root");
  ASSERT_EQ(fileSystem_.attributeReads(), Strings());
  EXPECT_EQ(column(inventory).size(), 102u);
  EXPECT_EQ(fileSystem_.attributeReads(), Strings());
}

TEST_F(ColumnListing, OnlyUncountedFilesAreLookedAtOnDisk) {
  for (const char* path : {"/root/a", "/root/b", "/root/c", "/root/d"}) fileSystem_.addFile(path, 10);
  fileSystem_.addFolder("/root/folder");
  fileSystem_.addOther("/root/pipe");
  const SweepInventory afterTwo = snapshotsOfEveryFile(fileSystem_, "/root").at(1);
  EXPECT_EQ(column(afterTwo).size(), 6u);
  EXPECT_EQ(fileSystem_.attributeReads(), (Strings{"/root/c", "/root/d"}));
}

TEST_F(ColumnListing, OnlyTheListedFolderIsOpened) {
  fileSystem_.addFile("/root/folder/x", 5);
  fileSystem_.addFile("/root/Mail.app/x", 5);
  fileSystem_.addLink("/root/link", "folder");
  EXPECT_EQ(unscannedColumn().size(), 3u);
  EXPECT_EQ(fileSystem_.openedFolders(), Strings{"/root"});
}

TEST(ColumnListingCost, OnlyRowsThatTieInSizeGetASortKey) {
  KeyCountingFileSystem fileSystem;
  for (const char* path : {"/root/tie2", "/root/single", "/root/tie1"}) fileSystem.addFile(path, 10);
  fileSystem.addFile("/root/single", 11);
  fileSystem.addFile("/root/other", 9);
  EXPECT_EQ(namesOf(columnOf(fileSystem, "/root", inventoryOfScan(fileSystem, "/root"))),
            (Strings{"single", "tie1", "tie2", "other"}));
  std::ranges::sort(fileSystem.keyed);
  EXPECT_EQ(fileSystem.keyed, (Strings{"tie1", "tie2"}));
}

}  // namespace
}  // namespace dunmere
