#include "engine/column_memory.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
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
  int madeKeys = 0;
};

class ColumnMemoryTest : public testing::Test {
 protected:
  std::vector<SweeperItem> list(ColumnMemory* memory) {
    return DiskSweeperScan::columnChildren(fileSystem_, FileUrl("/root"), inventory_, memory).value();
  }
  int keysMadeBy(ColumnMemory* memory) {
    fileSystem_.madeKeys = 0;
    list(memory);
    return fileSystem_.madeKeys;
  }
  void scan() { inventory_ = inventoryOfScan(fileSystem_, "/root"); }

  KeyCountingFileSystem fileSystem_;
  SweepInventory inventory_ = SweepInventory::emptyFor(FileUrl("/root"));
  ColumnMemory memory_;
};

TEST_F(ColumnMemoryTest, NamesThatStayNeedNoNewKeys) {
  for (const char* file : {"/root/a", "/root/b", "/root/c"}) fileSystem_.addFile(file, 7);
  EXPECT_EQ(keysMadeBy(&memory_), 3);
  scan();
  EXPECT_EQ(keysMadeBy(&memory_), 0);
  EXPECT_EQ(keysMadeBy(nullptr), 3);
}

TEST_F(ColumnMemoryTest, OnlyNamesOfEqualSizesNeedKeys) {
  fileSystem_.addFile("/root/a", 1);
  fileSystem_.addFile("/root/b", 2);
  fileSystem_.addFile("/root/c", 2);
  EXPECT_EQ(keysMadeBy(&memory_), 2);
  fileSystem_.addFile("/root/a", 2);
  EXPECT_EQ(keysMadeBy(&memory_), 1) << "the one that is new among equals";
}

TEST_F(ColumnMemoryTest, OtherNamesAreNotTakenForTheOldOnes) {
  // As many bytes in as many names, cut elsewhere.
  fileSystem_.addFile("/root/ab", 1);
  fileSystem_.addFile("/root/c", 1);
  list(&memory_);
  fileSystem_.remove("/root/ab");
  fileSystem_.remove("/root/c");
  fileSystem_.addFile("/root/bc", 1);
  fileSystem_.addFile("/root/a", 1);
  EXPECT_EQ(list(&memory_), list(nullptr));
}

TEST_F(ColumnMemoryTest, ListsAsWithoutItWhateverHappensToTheFolder) {
  std::mt19937_64 random(firstSeed());
  const auto below = [&random](std::size_t bound) { return static_cast<int>(random() % bound); };
  fileSystem_.addFolder("/root");
  std::set<std::string> files;
  for (int step = 0; step < 3'000; ++step) {
    const std::string path = "/root/" + std::string(1, static_cast<char>('A' + below(50))) + std::to_string(below(3));
    switch (below(4)) {
      case 0:
        if (files.erase(path) > 0) fileSystem_.remove(path);
        break;
      case 1:
        scan();
        break;
      default:
        fileSystem_.addFile(path, below(3));
        files.insert(path);
    }
    ASSERT_EQ(list(&memory_), list(nullptr)) << "step " << step;
  }
}

}  // namespace
}  // namespace dunmere::test
