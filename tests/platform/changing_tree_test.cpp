// Scans of a tree in which everything is made, renamed, swapped and removed all the time by other threads.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "platform/posix/unique_descriptor.h"
#include "tests/support/inventory_sums.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

// ---- The changes ----

/// Changes a tree without ever leaving it: from folder to folder by descriptors, and never through a link. Only entries
/// called n0 to n7 change. One thread.
class Churn {
 public:
  Churn(const std::string& root, const std::string& elsewhere, std::uint64_t seed)
      : root_(::open(root.c_str(), kFolderFlags)), targets_{elsewhere, "/", "..", ".", "n1", "nowhere"}, random_(seed) {
    if (!root_) throw std::system_error(errno, std::generic_category(), root);
  }

  /// How often each kind of change succeeded.
  struct Done {
    std::int64_t folders = 0;
    std::int64_t files = 0;
    std::int64_t links = 0;
    std::int64_t moves = 0;
    std::int64_t swaps = 0;
    std::int64_t removals = 0;
  };
  const Done& done() const { return done_; }

  void changeSomething() {
    const UniqueDescriptor folder = someFolder();
    const std::string name = someName();
    switch (below(8)) {
      case 0:
      case 1:
        done_.folders += ::mkdirat(folder.get(), name.c_str(), 0755) == 0;
        break;
      case 2:
      case 3:
        done_.files += makeFile(folder.get(), name);
        break;
      case 4:
        done_.links += ::symlinkat(targets_[below(targets_.size())].c_str(), folder.get(), name.c_str()) == 0;
        break;
      case 5:
        done_.moves += ::renameat(folder.get(), name.c_str(), someFolder().get(), someName().c_str()) == 0;
        break;
      case 6:  // the moment in which a folder turns into a link
        done_.swaps +=
            ::renameat2(folder.get(), name.c_str(), someFolder().get(), someName().c_str(), RENAME_EXCHANGE) == 0;
        break;
      default:
        done_.removals += remove(folder.get(), name);
        break;
    }
  }

 private:
  static constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

  std::size_t below(std::size_t bound) { return random_() % bound; }
  std::string someName() { return "n" + std::to_string(below(8)); }

  /// Some levels down, each through a folder that stays or one that changes.
  UniqueDescriptor someFolder() {
    UniqueDescriptor folder(::dup(root_.get()));
    for (std::size_t levels = below(5); levels > 0; --levels) {
      const std::string name = below(2) == 0 ? "still" : someName();
      UniqueDescriptor next(::openat(folder.get(), name.c_str(), kFolderFlags));
      if (!next) break;
      folder = std::move(next);
    }
    return folder;
  }

  bool makeFile(int folder, const std::string& name) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const UniqueDescriptor file(::openat(folder, name.c_str(), kFlags, 0644));
    return file && ::write(file.get(), "some bytes", 10) == 10;
  }

  /// With what it holds, as far as that is called as all that changes.
  bool remove(int parent, const std::string& name) {
    if (::unlinkat(parent, name.c_str(), 0) == 0) return true;
    const UniqueDescriptor folder(::openat(parent, name.c_str(), kFolderFlags));
    if (!folder) return false;
    for (int i = 0; i < 8; ++i) remove(folder.get(), "n" + std::to_string(i));
    return ::unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0;
  }

  const UniqueDescriptor root_;
  const std::array<std::string, 6> targets_;
  std::mt19937_64 random_;
  Done done_;
};

// ---- The scans ----

/// Beside the tree lies a folder that it has links to. In the tree are folders called "still", each in the one before,
/// with files that stay as they are while all around them changes.
class ChangingTree : public ::testing::Test {
 protected:
  static constexpr int kLevels = 4;
  static constexpr int kFilesThatStay = 20;

  ChangingTree() {
    tree_.folder("elsewhere/outside");
    tree_.file("elsewhere/outside/outside", 5'000);
    std::string folder = "root";
    for (int level = 0; level < kLevels; ++level) {
      tree_.folder(folder);
      for (int i = 0; i < kFilesThatStay; ++i) {
        const std::string path = folder + "/stays" + std::to_string(i);
        tree_.file(path, static_cast<std::size_t>(i) * 1'000);
        staying_.emplace(tree_.path(path), tree_.allocatedBytes(path));
      }
      folder += "/still";
    }
  }

  SweepInventory scan(unsigned readers) {
    const auto check = [this](const SweepInventory& snapshot) { expectConsistent(snapshot); };
    return DiskSweeperScan::runProgressiveScan(*files_, tree_.url("root"), check, {.readers = readers}).get().value();
  }

  void expectConsistent(const SweepInventory& inventory) {
    EXPECT_EQ(wrongSum(inventory), "");
    inventory.pathBytes.forEach([this](std::string_view key, std::int64_t) {
      const std::string_view name = key.substr(key.rfind('/') + 1);
      const bool isOwn = name.starts_with("n") || name.starts_with("stays") || name == "still" || key == rootKey_;
      EXPECT_TRUE(isOwn) << key << " lies elsewhere";
    });
  }

  void expectWhatStayedOnce(const SweepInventory& inventory) {
    std::multimap<std::string, std::int64_t> counted;
    inventory.pathBytes.forEach([&counted](std::string_view key, std::int64_t bytes) {
      if (key.contains("/stays")) counted.emplace(key, bytes);
    });
    EXPECT_EQ(counted, staying_);
  }

  std::string path(const std::string& relative) const { return tree_.path(relative); }

 private:
  const TemporaryTree tree_{fastFolder()};
  const std::string rootKey_ = tree_.path("root");
  const std::unique_ptr<FileSystem> files_ = makePlatformFileSystem();
  std::multimap<std::string, std::int64_t> staying_;
};

TEST_F(ChangingTree, ScansEndInsideAndAddUpAndCountOnceWhatStays) {
  constexpr int kThreads = 2;
  const std::uint64_t seed = firstSeed();
  std::atomic<std::int64_t> left = rounds(1'000'000);
  std::atomic<bool> isEnough = false;
  std::vector<std::unique_ptr<Churn>> churns;
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) {
    churns.push_back(std::make_unique<Churn>(path("root"), path("elsewhere"), seed + static_cast<std::uint64_t>(i)));
    threads.emplace_back([&churn = *churns.back(), &left, &isEnough] {
      for (; !isEnough; --left) churn.changeSomething();
    });
  }

  std::set<std::int64_t> counts;
  int scans = 0;
  // On a busy machine few scans end while all that is changed.
  constexpr std::size_t kLeastCounts = 11;
  for (; (left > 0 || counts.size() < kLeastCounts) && !HasFailure(); ++scans) {
    const SweepInventory inventory = scan(static_cast<unsigned>(scans % 4));
    EXPECT_TRUE(inventory.scanComplete);
    expectWhatStayedOnce(inventory);
    counts.insert(inventory.fileCount);
  }
  isEnough = true;
  threads.clear();
  std::cout << scans << " scans, " << counts.size() << " different counts" << std::endl;
  for (const auto& churn : churns) {
    const Churn::Done& done = churn->done();
    for (const std::int64_t times : {done.folders, done.files, done.links, done.moves, done.swaps, done.removals})
      EXPECT_GT(times, 1'000);
  }
}

}  // namespace
}  // namespace dunmere::test
