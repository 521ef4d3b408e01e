#include "engine/sweep_inventory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>

#include "tests/engine/scan/scan_results.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/print_values.h"

namespace dunmere {
namespace {

using test::inventoryOfScan;
using test::snapshotsOfEveryFile;
using PathMap = std::map<std::string, std::int64_t>;

PathMap mapOf(const SweepInventory& inventory) {
  PathMap map;
  inventory.pathBytes.forEach([&map](std::string_view key, std::int64_t bytes) {
    EXPECT_TRUE(map.emplace(key, bytes).second) << key << " comes twice";
  });
  return map;
}

TEST(SweepInventory, BeforeAScanNothingIsCounted) {
  const SweepInventory inventory = SweepInventory::emptyFor(FileUrl("/vol//data/"));
  EXPECT_EQ(inventory.root, FileUrl("/vol//data/"));
  EXPECT_EQ(inventory.rootPath, "/vol/data");
  EXPECT_TRUE(inventory.pathBytes.empty());
  EXPECT_EQ(inventory.fileCount, 0);
  EXPECT_EQ(inventory.totalFileBytes, 0);
  EXPECT_FALSE(inventory.hadReadErrors);
  EXPECT_FALSE(inventory.scanComplete);
}

TEST(SweepInventory, AnEmptyFolderHasAnEmptyMap) {
  test::MemoryFileSystem fileSystem;
  fileSystem.addFolder("/root");
  const SweepInventory inventory = inventoryOfScan(fileSystem, "/root");
  EXPECT_EQ(mapOf(inventory), PathMap());
  EXPECT_EQ(inventory.pathBytes.size(), 0);
  EXPECT_EQ(inventory.pathBytes.find("/root"), std::nullopt);
  EXPECT_EQ(inventory.fileCount, 0);
  EXPECT_EQ(inventory.totalFileBytes, 0);
  EXPECT_TRUE(inventory.scanComplete);
}

TEST(SweepInventory, OfTheRootFolderEveryKeyStartsWithASlash) {
  test::MemoryFileSystem fileSystem;
  fileSystem.addFile("/top", 1);
  fileSystem.addFile("/Users/a/b", 20);
  const SweepInventory inventory = inventoryOfScan(fileSystem, "/");
  EXPECT_EQ(inventory.rootPath, "/");
  EXPECT_EQ(mapOf(inventory), (PathMap{{"/", 21}, {"/top", 1}, {"/Users", 20}, {"/Users/a", 20}, {"/Users/a/b", 20}}));
}

TEST(SweepInventory, OfAnyOtherFolderTheRootPathHasNoTrailingSlash) {
  test::MemoryFileSystem fileSystem;
  fileSystem.addFile("/vol/data/x", 5);
  for (const char* root : {"/vol/data", "/vol/data/", "/vol//data", "/vol/./data/."}) {
    const SweepInventory inventory = inventoryOfScan(fileSystem, root);
    EXPECT_EQ(inventory.root, FileUrl(root));
    EXPECT_EQ(inventory.rootPath, "/vol/data");
    EXPECT_EQ(mapOf(inventory), (PathMap{{"/vol/data", 5}, {"/vol/data/x", 5}})) << root;
  }
}

TEST(SweepInventory, FoldersWithoutCountedFilesHaveNoEntry) {
  test::MemoryFileSystem fileSystem;
  fileSystem.addFolder("/root/empty");
  fileSystem.addLink("/root/links/link", "/root/file");
  fileSystem.addFile("/root/packages/Mail.app/x", 7);
  fileSystem.addFile("/root/file", 3);
  EXPECT_EQ(mapOf(inventoryOfScan(fileSystem, "/root")), (PathMap{{"/root", 3}, {"/root/file", 3}}));
}

TEST(SweepInventory, AFileOfZeroBytesHasEntriesUpToTheRoot) {
  test::MemoryFileSystem fileSystem;
  fileSystem.addFile("/root/a/file", 0);
  EXPECT_EQ(mapOf(inventoryOfScan(fileSystem, "/root")), (PathMap{{"/root", 0}, {"/root/a", 0}, {"/root/a/file", 0}}));
}

TEST(SweepInventory, TheRootsEntryIsTheTotalInEverySnapshot) {
  test::MemoryFileSystem fileSystem;
  fileSystem.addFile("/root/a/x", 1);
  fileSystem.addFile("/root/a/y", 20);
  fileSystem.addFile("/root/z", 300);
  const auto snapshots = snapshotsOfEveryFile(fileSystem, "/root");
  ASSERT_EQ(snapshots.size(), 4u);
  std::int64_t files = 0;
  for (const SweepInventory& snapshot : snapshots) {
    EXPECT_EQ(snapshot.pathBytes.find(snapshot.rootPath), snapshot.totalFileBytes);
    EXPECT_GE(snapshot.fileCount, files);
    files = snapshot.fileCount;
  }
}

TEST(SweepInventory, APublishedSnapshotNeverChanges) {
  test::MemoryFileSystem fileSystem;
  for (int i = 0; i < 300; ++i) fileSystem.addFile("/root/" + std::to_string(i % 7) + "/" + std::to_string(i), i);
  std::vector<PathMap> mapsWhenPublished;
  fileSystem.setClockStep(std::chrono::seconds(1));
  std::vector<SweepInventory> snapshots;
  const auto result =
      DiskSweeperScan::runProgressiveScan(fileSystem, FileUrl("/root"), [&](const SweepInventory& snapshot) {
        snapshots.push_back(snapshot);
        mapsWhenPublished.push_back(mapOf(snapshot));
      }).get();
  ASSERT_TRUE(result);
  ASSERT_EQ(snapshots.size(), 301u);
  for (std::size_t i = 0; i < snapshots.size(); ++i) EXPECT_EQ(mapOf(snapshots[i]), mapsWhenPublished[i]) << i;
}

TEST(SweepInventory, LaterSnapshotsOnlyAdd) {
  test::MemoryFileSystem fileSystem;
  for (int i = 0; i < 60; ++i) fileSystem.addFile("/root/" + std::to_string(i % 7) + "/" + std::to_string(i), i);
  PathMap earlier;
  for (const SweepInventory& snapshot : snapshotsOfEveryFile(fileSystem, "/root")) {
    const PathMap map = mapOf(snapshot);
    for (const auto& [key, bytes] : earlier) EXPECT_GE(map.at(key), bytes) << key;
    earlier = map;
  }
}

static_assert(std::is_copy_constructible_v<SweepInventory>);

}  // namespace
}  // namespace dunmere
