#include "engine/path_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

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

}  // namespace
}  // namespace dunmere
