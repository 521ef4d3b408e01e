// Whole scans and listings of real trees, checked against a plain count.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/plain_count.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

using ScanResult = DiskSweeperScan::ScanResult;

class RealScanTest : public ::testing::Test {
 protected:
  ScanResult scan(const FileUrl& root) {
    return DiskSweeperScan::runProgressiveScan(*files, root, [](const SweepInventory&) {}).get();
  }

  void expectSameAsPlainCount(const std::string& root) {
    const PlainCount expected = plainCount(root);
    const ScanResult inventory = scan(FileUrl(root));
    ASSERT_TRUE(inventory);
    EXPECT_TRUE(inventory->scanComplete);
    EXPECT_FALSE(inventory->hadReadErrors);
    EXPECT_EQ(inventory->fileCount, expected.fileCount);
    EXPECT_EQ(inventory->totalFileBytes, expected.totalBytes);
    EXPECT_EQ(inventory->pathBytes.size(), static_cast<std::int64_t>(expected.bytes.size()));
    for (const auto& [key, bytes] : expected.bytes) {
      ASSERT_EQ(inventory->pathBytes.find(key), bytes) << ::testing::PrintToString(key);
    }
  }

  TemporaryTree tree;
  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
};

/// Fills `folder` with files, folders, links, FIFOs and packages by chance.
void grow(const TemporaryTree& tree, const std::string& folder, std::mt19937& chance, int depth) {
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(chance() % limit); };
  const auto name = [&](const char* start) { return folder + "/" + start + std::to_string(chance()); };
  tree.folder(folder);
  for (unsigned i = below(6); i > 0; --i) {
    const std::string file = name("file\n\xff");
    tree.file(file, below(60'000));
    if (below(4) == 0) tree.hardLink(file, name("again"));
  }
  if (below(3) == 0) tree.sparseFile(name("sparse"), 5'000'000);
  if (below(3) == 0) tree.link(name("link"), "..");
  if (below(4) == 0) tree.fifo(name("fifo"));
  if (below(5) == 0) {
    const std::string package = name("program") + ".App";
    tree.folder(package);
    tree.file(package + "/content", 8192);
  }
  if (depth == 0) return;
  for (unsigned i = below(5); i > 0; --i) grow(tree, name(".folder "), chance, depth - 1);
}

TEST_F(RealScanTest, RandomTreesAddUpAsThePlainWalkSays) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 chance(seed);
    const std::string top = "tree" + std::to_string(seed);
    tree.folder(top + "/always");
    tree.file(top + "/always/one", 1);
    grow(tree, top, chance, 4);
    expectSameAsPlainCount(tree.path(top));
  }
}

TEST_F(RealScanTest, HeadersOfTheSystemAddUpAsThePlainWalkSays) {
  expectSameAsPlainCount("/usr/include");
}

TEST_F(RealScanTest, HardLinksCountEachTime) {
  tree.file("one", 40'000);
  tree.hardLink("one", "two");
  const auto inventory = scan(tree.url()).value();
  EXPECT_EQ(inventory.fileCount, 2);
  EXPECT_EQ(inventory.totalFileBytes, 2 * tree.allocatedBytes("one"));
}

TEST_F(RealScanTest, PackageIsNotEntered) {
  tree.folder("Program.app/Contents");
  tree.file("Program.app/Contents/binary", 40'000);
  const auto inventory = scan(tree.url()).value();
  EXPECT_EQ(inventory.fileCount, 0);
  EXPECT_TRUE(inventory.pathBytes.empty());
  const auto inside = scan(tree.url("Program.app")).value();
  EXPECT_EQ(inside.fileCount, 1);
}

TEST_F(RealScanTest, LinksBelowAddNothingAndARootLinkIsFollowed) {
  tree.folder("real");
  tree.file("real/file", 40'000);
  tree.folder("scanned");
  tree.link("scanned/folder", "../real");
  tree.link("scanned/file", "../real/file");
  tree.link("root", "real");
  EXPECT_EQ(scan(tree.url("scanned"))->fileCount, 0);
  const auto inventory = scan(tree.url("root")).value();
  EXPECT_EQ(inventory.totalFileBytes, tree.allocatedBytes("real/file"));
  EXPECT_EQ(inventory.pathBytes.find(tree.path("root/file")), tree.allocatedBytes("real/file"));
}

TEST_F(RealScanTest, SpecialFilesAreNotCountedAndNotOpened) {
  tree.fifo("fifo");
  tree.socket("socket");
  if (::geteuid() == 0) tree.device("device");
  const auto inventory = scan(tree.url()).value();
  EXPECT_EQ(inventory.fileCount, 0);
  EXPECT_FALSE(inventory.hadReadErrors);
}

TEST_F(RealScanTest, MissingRootAndFileAsRootFail) {
  tree.file("file", 1);
  EXPECT_EQ(errorOf(scan(tree.url("missing"))), ENOENT);
  EXPECT_EQ(errorOf(scan(tree.url("file"))), ENOTDIR);
}

TEST_F(RealScanTest, RootThatVanishesBetweenTwoScans) {
  tree.folder("root");
  tree.file("root/file", 10);
  EXPECT_EQ(scan(tree.url("root"))->fileCount, 1);
  tree.remove("root");
  EXPECT_EQ(errorOf(scan(tree.url("root"))), ENOENT);
}

TEST_F(RealScanTest, TreeThatVanishesWhileItIsReadEndsTheScanQuietly) {
  for (int i = 0; i < 13'000; ++i) {
    if (i % 100 == 0) tree.folder("root/" + std::to_string(i / 100));
    tree.file("root/" + std::to_string(i / 100) + "/" + std::to_string(i));
  }
  bool removed = false;
  const auto inventory = DiskSweeperScan::runProgressiveScan(*files, tree.url("root"), [&](const SweepInventory& seen) {
                           if (removed) return;
                           EXPECT_GT(seen.fileCount, 0);
                           tree.remove("root");
                           removed = true;
                         }).get();
  ASSERT_TRUE(inventory);
  EXPECT_TRUE(removed);
  EXPECT_TRUE(inventory->scanComplete);
  EXPECT_FALSE(inventory->hadReadErrors) << "what has gone is not unreadable";
  EXPECT_GT(inventory->fileCount, 0);
  EXPECT_LE(inventory->fileCount, 13'000);
}

TEST_F(RealScanTest, WhatTheSystemHidesOfItselfIsNoReadError) {
  const auto result = runUnprivileged([&] {
    EXPECT_NE(::access("/proc/1/fd/0", F_OK), 0) << "nothing is hidden here";
    EXPECT_FALSE(scan(FileUrl("/proc/1")).value().hadReadErrors);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(RealScanTest, FolderWithoutPermissionIsAReadErrorAndTheRestIsCounted) {
  tree.folder("root/closed");
  tree.file("root/closed/file", 40'000);
  tree.file("root/open", 10'000);
  tree.mode("root/closed", 0);
  const std::int64_t open = tree.allocatedBytes("root/open");
  const auto result = runUnprivileged([&] {
    const auto inventory = scan(tree.url("root")).value();
    EXPECT_TRUE(inventory.hadReadErrors);
    EXPECT_EQ(inventory.fileCount, 1);
    EXPECT_EQ(inventory.totalFileBytes, open);
    EXPECT_EQ(inventory.pathBytes.find(tree.path("root/closed")), std::nullopt);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(RealScanTest, TenThousandLevelsAreScanned) {
  constexpr std::size_t kDepth = 10'000;
  const TemporaryTree deep(fastFolder());
  deep.chain("", kDepth, "d", 2);
  deep.file("d/s0/file", 4096);
  const auto inventory = scan(deep.url()).value();
  EXPECT_FALSE(inventory.hadReadErrors);
  EXPECT_EQ(inventory.fileCount, 1);
  EXPECT_EQ(inventory.totalFileBytes, 4096);
}

TEST_F(RealScanTest, ColumnShowsCountedSizesLargestFirst) {
  tree.folder("b");
  tree.file("b/large", 100'000);
  tree.file("a", 10);
  tree.file(".hidden", 50'000);
  tree.folder("Empty.app");
  tree.link("link", "b/large");
  tree.fifo("fifo");
  const auto inventory = scan(tree.url()).value();
  const auto column = DiskSweeperScan::columnChildren(*files, tree.url(), inventory).value();
  std::vector<std::string> names;
  for (const SweeperItem& item : column) names.push_back(item.name);
  EXPECT_EQ(names, (std::vector<std::string>{"b", "link", ".hidden", "a", "Empty.app", "fifo"}));
  EXPECT_EQ(column[0].sizeBytes, tree.allocatedBytes("b/large"));
  EXPECT_EQ(column[1].sizeBytes, tree.allocatedBytes("b/large"));
  EXPECT_TRUE(column[1].isSymbolicLink);
  EXPECT_EQ(column[4].sizeBytes, 0);
}

TEST(RealVolumes, TheRootOrADiskIsOffered) {
  const auto files = makePlatformFileSystem();
  const auto volumes = DiskSweeperScan::listVolumes(*files);
  ASSERT_FALSE(volumes.empty());
  for (const SweeperVolume& volume : volumes) {
    EXPECT_GE(volume.totalBytes, 1);
    EXPECT_LE(volume.freeBytes, volume.totalBytes);
  }
}

}  // namespace
}  // namespace dunmere::test
