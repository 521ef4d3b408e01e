// Scans in a process that may hold few file descriptors: the same, or they say that something is missing.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <string>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

/// The limit is one on a descriptor's number: gaps below the highest one in use count as left.
void leaveDescriptors(rlim_t count) {
  int highest = -1;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int number = std::stoi(entry.path().filename());
    if (::fcntl(number, F_GETFD) >= 0) highest = std::max(highest, number);  // the iterator's own is the last
  }
  int filler;
  while ((filler = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) < highest) continue;
  ::close(filler);
  const rlim_t most = static_cast<rlim_t>(filler) + count;
  const rlimit limit{.rlim_cur = most, .rlim_max = most};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

class ScarceDescriptors : public ::testing::Test {
 protected:
  ScarceDescriptors() {
    for (const std::string branch : {"a", "b", "c", "d"}) {
      tree.folder(branch);
      tree.chain(branch, kLevels, "d", 4);
      std::string folder = branch;
      for (int level = 0; level < kLevels; ++level, folder += "/d") {
        tree.file(folder + "/s0/file" + std::to_string(level), 1);
        tree.file(folder + "/file", 1);
      }
    }
  }

  static constexpr int kLevels = 20;
  static constexpr int kFiles = 4 * kLevels * 2;

  SweepInventory scan(unsigned readers) {
    const auto files = makePlatformFileSystem();
    return DiskSweeperScan::runProgressiveScan(*files, tree.url(), [](const SweepInventory&) {}, {.readers = readers})
        .get()
        .value();
  }

  std::map<std::string, std::int64_t> wholeScan(unsigned readers) {
    const SweepInventory inventory = scan(readers);
    EXPECT_FALSE(inventory.hadReadErrors) << readers << " readers";
    EXPECT_EQ(inventory.fileCount, kFiles) << readers << " readers";
    std::map<std::string, std::int64_t> counted;
    inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) { counted.emplace(key, bytes); });
    return counted;
  }

  TemporaryTree tree{fastFolder()};
};

TEST_F(ScarceDescriptors, ResultIsTheSameWithALowLimit) {
  const ChildResult result = runInChild([this] {
    const auto plenty = wholeScan(8);
    leaveDescriptors(256);
    EXPECT_EQ(wholeScan(16), plenty);
    leaveDescriptors(64);
    for (const unsigned readers : {0, 1, 3}) {
      for (int round = 0; round < 5; ++round) EXPECT_EQ(wholeScan(readers), plenty) << readers << " readers";
    }
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(ScarceDescriptors, OneThreadNeedsTheRootAFolderOnTheWayAndTheOneThatIsRead) {
  const ChildResult result = runInChild([this] {
    const auto plenty = wholeScan(0);
    for (rlim_t left = 12; left >= 3; --left) {
      leaveDescriptors(left);
      EXPECT_EQ(wholeScan(0), plenty) << left << " descriptors";
    }
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(ScarceDescriptors, TooFewForAllThreadsIsAReadErrorAtMost) {
  const ChildResult result = runInChild([this] {
    for (rlim_t left = 16; left >= 1; --left) {
      leaveDescriptors(left);
      for (const unsigned readers : {1, 3, 16}) {
        const SweepInventory inventory = scan(readers);
        EXPECT_TRUE(inventory.hadReadErrors || inventory.fileCount == kFiles) << left << " descriptors";
      }
    }
    for (const unsigned readers : {0, 1, 3, 16}) {
      EXPECT_TRUE(scan(readers).hadReadErrors);
      EXPECT_EQ(scan(readers).fileCount, 0);
    }
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(ScarceDescriptors, NoneForTheRootFailsTheScanAndTheListing) {
  const ChildResult result = runInChild([this] {
    const auto files = makePlatformFileSystem();
    leaveDescriptors(0);
    const auto scan = DiskSweeperScan::runProgressiveScan(*files, tree.url(), [](const SweepInventory&) {}).get();
    EXPECT_EQ(errorOf(scan), EMFILE);
    const auto column = DiskSweeperScan::columnChildren(*files, tree.url(), SweepInventory::emptyFor(tree.url()));
    EXPECT_EQ(errorOf(column), EMFILE);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

}  // namespace
}  // namespace dunmere::test
