#include "engine/path_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "engine/path_tree_writer.h"
#include "tests/engine/scan_results.h"
#include "tests/support/memory_file_system.h"

namespace dunmere {
namespace {

using test::inventoryOfScan;

std::vector<std::string> keysOf(const PathBytes& pathBytes) {
  std::vector<std::string> keys;
  pathBytes.forEach([&keys](std::string_view key, std::int64_t) { keys.emplace_back(key); });
  return keys;
}

class PathFinderTest : public testing::Test {
 protected:
  void addPackagesOfManyVersions() {
    for (int package = 0; package < 40; ++package) {
      for (const std::string name : {"a", "b/c", "b/d"}) {
        fileSystem_.addFile("/root/store/" + std::to_string(package) + "/" + name, 1 + package);
      }
    }
    fileSystem_.addFile("/root/file", 7);
  }

  test::MemoryFileSystem fileSystem_;
};

TEST_F(PathFinderTest, FindsEveryKeyInAnyOrder) {
  addPackagesOfManyVersions();
  const PathBytes pathBytes = inventoryOfScan(fileSystem_, "/root").pathBytes;
  std::vector<std::string> keys = keysOf(pathBytes);
  ASSERT_EQ(keys.size(), 203U);
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round) {
    std::ranges::shuffle(keys, random);
    PathFinder finder(pathBytes);
    for (const std::string& key : keys) EXPECT_EQ(finder.find(key), pathBytes.find(key)) << key;
  }
}

TEST_F(PathFinderTest, KeysThatWereNotCountedHaveNoBytes) {
  addPackagesOfManyVersions();
  PathFinder finder(inventoryOfScan(fileSystem_, "/root").pathBytes);
  for (const std::string key : {"/", "/other", "/roo", "/root2", "/root/none", "/root/file/below", "/root/store/99/a",
                                "/root/store/1/none", "/root/store/1/b/c/below"}) {
    EXPECT_EQ(finder.find(key), std::nullopt) << key;
    EXPECT_EQ(finder.find("/root/store/1/b/c"), 2) << "after " << key;
  }
}

TEST_F(PathFinderTest, ARootOfAllPathsIsFoundAndSearched) {
  fileSystem_.addFile("/a/b", 5);
  PathFinder finder(inventoryOfScan(fileSystem_, "/").pathBytes);
  EXPECT_EQ(finder.find("/"), 5);
  EXPECT_EQ(finder.find("/a"), 5);
  EXPECT_EQ(finder.find("/a/b"), 5);
}

TEST_F(PathFinderTest, NothingIsFoundWhereNothingWasCounted) {
  fileSystem_.addFolder("/root");
  PathFinder finder(inventoryOfScan(fileSystem_, "/root").pathBytes);
  EXPECT_EQ(finder.find("/root"), std::nullopt);
  EXPECT_EQ(PathFinder(PathBytes()).find("/root"), std::nullopt);
}

PathTreeWriter folderOf(const std::vector<std::string>& files) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  std::string packed;
  for (std::size_t i = 0; i < files.size(); ++i) appendPackedFile(packed, files[i], static_cast<std::int64_t>(i));
  writer.addFiles(packed, static_cast<std::int64_t>(files.size()), 0);
  return writer;
}

// Many enough that a search from the start for each one would not end.
TEST(PathFinderInAGiantFolder, FindsFilesInAnyOrder) {
  std::vector<std::string> names(300'000);
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = "file number " + std::to_string(i);
  PathFinder finder(folderOf(names).snapshot());
  for (std::size_t i = names.size(); i-- > 0;) ASSERT_EQ(finder.find("/r/" + names[i]), static_cast<std::int64_t>(i));
  std::vector<std::size_t> order(names.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::ranges::shuffle(order, std::mt19937(7));
  for (const std::size_t i : order) {
    ASSERT_EQ(finder.find("/r/" + names[i]), static_cast<std::int64_t>(i));
    ASSERT_EQ(finder.find("/r/" + names[i] + "?"), std::nullopt);
  }
}

TEST(PathFinderInAGiantFolder, FindsFoldersInAnyOrder) {
  constexpr int kFolders = 100'000;
  PathTreeWriter writer = folderOf({"f"});
  for (int i = 0; i < kFolders; ++i) {
    writer.openFolder(std::to_string(i));
    std::string packed;
    appendPackedFile(packed, "f", i);
    writer.addFiles(packed, 1, i);
    writer.closeFolder();
  }
  PathFinder finder(writer.snapshot());
  for (int i = 0; i < kFolders; ++i) ASSERT_EQ(finder.find("/r/" + std::to_string(i)), i);
  for (int i = kFolders; i-- > 0;) ASSERT_EQ(finder.find("/r/" + std::to_string(i)), i);
}

TEST(PathFinderOfAnOpenFolder, HasWhatWasCounted) {
  PathTreeWriter writer = folderOf({"f0", "f1"});
  PathFinder finder(writer.snapshot());
  std::string packed;
  appendPackedFile(packed, "f2", 4);
  writer.addFiles(packed, 1, 4);
  EXPECT_EQ(finder.find("/r/f1"), 1);
  EXPECT_EQ(finder.find("/r/f2"), std::nullopt);
  EXPECT_EQ(finder.find("/r"), 0);
}

}  // namespace
}  // namespace dunmere
