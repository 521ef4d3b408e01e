// Random trees on real file systems are scanned and, beside that, counted path by path with readdir and lstat.
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstdint>
#include <map>
#include <random>
#include <ranges>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/plain_count.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

// ---- Random trees ----

class RandomTree {
 public:
  RandomTree(const std::string& parent, std::uint64_t seed, bool withMounts) : tree_(parent), random_(seed) {
    folders_.push_back("root");
    tree_.folder("root");
    for (unsigned left = below(60); left > 0; --left) addEntry();
    for (unsigned left = withMounts ? below(4) : 0; left > 0; --left) mountSomething();
    // What lies in a folder first, since not everybody gets there when that is closed.
    for (const std::string& folder : std::views::reverse(folders_)) limitAccess(folder);
  }
  ~RandomTree() {
    while (!mounts_.empty()) {
      ::umount2(mounts_.back().c_str(), MNT_DETACH);
      mounts_.pop_back();
    }
  }
  RandomTree(const RandomTree&) = delete;
  RandomTree& operator=(const RandomTree&) = delete;

  std::string root() const { return tree_.path("root"); }

 private:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  const std::string& anyFolder() { return folders_[below(static_cast<unsigned>(folders_.size()))]; }

  std::string newName() {
    static const std::vector<std::string> odd = {
        " ", "\n", "...", ".hidden", "\xff\xfe", "\xcc\x81", "\xe2\x80\xae", "\\", "-", "a:b", std::string(120, 'x')};
    const std::string unique = std::to_string(++names_);
    const std::string& part = odd[below(static_cast<unsigned>(odd.size()))];
    switch (below(3)) {
      case 0:
        return part + unique;
      case 1:
        return unique + part;
      default:
        return "n" + unique;
    }
  }

  void addEntry() {
    // Half the time the newest folder, so that trees get deep.
    const std::string& folder = below(2) == 0 ? folders_.back() : anyFolder();
    const std::string path = folder + "/" + newName();
    switch (below(12)) {
      case 0:
      case 1:
      case 2:
        addFolder(path);
        break;
      case 3:
        addFolder(path + (below(3) == 0 ? ".app" : below(2) == 0 ? ".PhotosLibrary" : ".apps"));
        break;
      case 4:
        tree_.link(path, below(2) == 0 ? ".." : tree_.path(anyFolder()));
        break;
      case 5:
        below(2) == 0 ? tree_.fifo(path) : tree_.socket("root/s" + std::to_string(++names_));  // has a short limit
        break;
      case 6:
        tree_.sparseFile(path, 1 + below(1 << 30));
        break;
      default:
        tree_.file(path, below(3) == 0 ? 0 : below(40'000));
        if (below(4) == 0) tree_.hardLink(path, folder + "/again" + std::to_string(++names_));
        break;
    }
  }

  void addFolder(const std::string& path) {
    tree_.folder(path);
    folders_.push_back(path);
  }

  void mountSomething() {
    const std::string place = anyFolder() + "/mount" + std::to_string(++names_);
    const std::string from = tree_.path(anyFolder());
    tree_.folder(place);
    const std::string path = tree_.path(place);
    const bool again = below(2) == 0;
    const int failed = again ? ::mount(from.c_str(), path.c_str(), nullptr, MS_BIND, nullptr)
                             : ::mount("random-tree", path.c_str(), "tmpfs", 0, "size=4m");
    if (failed != 0) throw std::system_error(errno, std::generic_category(), "mount at " + path);
    mounts_.push_back(path);
    if (again) return;
    for (unsigned left = below(6); left > 0; --left) tree_.file(place + "/" + newName(), below(20'000));
  }

  // Now and then a folder may not be read, or not be entered, or neither, by anybody but root.
  void limitAccess(const std::string& folder) {
    constexpr unsigned kModes[] = {0, 0444, 0111};
    if (folder != "root" && below(12) == 0) tree_.mode(folder, kModes[below(3)]);
  }

  TemporaryTree tree_;
  std::mt19937_64 random_;
  std::vector<std::string> folders_;
  std::vector<std::string> mounts_;  // absolute, in the order of mounting
  int names_ = 0;
};

// ---- The comparison ----

void expectScanAgrees(const std::string& root, unsigned readers) {
  const PlainCount expected = plainCount(root);
  const auto files = makePlatformFileSystem();
  const auto inventory =
      DiskSweeperScan::runProgressiveScan(*files, FileUrl(root), [](const SweepInventory&) {}, {.readers = readers})
          .get();
  ASSERT_TRUE(inventory);
  EXPECT_EQ(inventory->hadReadErrors, expected.hadReadErrors);
  EXPECT_EQ(inventory->fileCount, expected.fileCount);
  EXPECT_EQ(inventory->totalFileBytes, expected.totalBytes);
  std::map<std::string, std::int64_t> counted;
  inventory->pathBytes.forEach([&](std::string_view key, std::int64_t bytes) { counted.emplace(key, bytes); });
  EXPECT_EQ(counted, expected.bytes);
  EXPECT_EQ(inventory->pathBytes.size(), static_cast<std::int64_t>(expected.bytes.size()));
}

// The scan runs in a child of its own, so that the process that makes the trees never has a second thread.
int compareTrees(const std::string& parent, std::uint64_t first, std::uint64_t trees, bool withMounts) {
  for (std::uint64_t seed = first; seed < first + trees; ++seed) {
    const RandomTree tree(parent, seed, withMounts);
    const auto compare = [&] {
      expectScanAgrees(tree.root(), static_cast<unsigned>(seed % 4));
      return 0;
    };
    const ChildResult result = seed % 3 == 0 ? runInChild(compare) : runUnprivileged(compare);
    EXPECT_EQ(result.exitCode, 0) << "seed " << seed << "\n" << result.output;
    if (result.exitCode != 0) return result.exitCode;
  }
  return 0;
}

void expectTreesAgree(const std::string& parent, std::uint64_t trees) {
  EXPECT_EQ(compareTrees(parent, firstSeed(), trees, false), 0);
}

void expectTreesWithMountsAgree(const std::string& parent, std::uint64_t trees) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const std::uint64_t first = firstSeed();
  const ChildResult result = runWithOwnMounts([&] { return compareTrees(parent, first, trees, true); });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(RandomTreeScan, TreesInMemoryWithClosedFoldersAddUp) {
  expectTreesAgree(fastFolder(), rounds(300));
}

TEST(RandomTreeScan, TreesInMemoryWithMountsAndClosedFoldersAddUp) {
  expectTreesWithMountsAgree(fastFolder(), rounds(700));
}

TEST(RandomTreeScan, TreesOnTheDiskWithClosedFoldersAddUp) {
  expectTreesAgree(::testing::TempDir(), 15);
}

TEST(RandomTreeScan, TreesOnTheDiskWithMountsAndClosedFoldersAddUp) {
  expectTreesWithMountsAgree(::testing::TempDir(), 25);
}

}  // namespace
}  // namespace dunmere::test
