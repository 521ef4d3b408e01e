// Scan, listing and pane on trees made to trip them, compared with a plain count.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "platform/posix/open_path.h"
#include "sweeper/disk_sweeper_pane.h"
#include "sweeper/display_text.h"
#include "tests/platform/opened_files.h"
#include "tests/support/background_queue.h"
#include "tests/support/child_process.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/hostile_trees.h"
#include "tests/support/inventory_sums.h"
#include "tests/support/machine.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/plain_count.h"

namespace dunmere::test {
namespace {

constexpr std::size_t kMostFoldersListed = 300;

SweepInventory scan(FileSystem& files, const FileUrl& root, unsigned readers) {
  return DiskSweeperScan::runProgressiveScan(files, root, [](const SweepInventory&) {}, {.readers = readers})
      .get()
      .value();
}

// ---- Scan ----

void expectSameAsPlainCount(const SweepInventory& inventory, const PlainCount& expected) {
  EXPECT_TRUE(inventory.scanComplete);
  EXPECT_EQ(inventory.hadReadErrors, expected.hadReadErrors);
  EXPECT_EQ(inventory.fileCount, expected.fileCount);
  EXPECT_EQ(inventory.totalFileBytes, expected.totalBytes);
  EXPECT_EQ(inventory.pathBytes.size(), static_cast<std::int64_t>(expected.bytes.size()));
  int different = 0;
  inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) {
    const auto counted = expected.bytes.find(std::string(key));
    const bool same = counted != expected.bytes.end() && counted->second == bytes;
    if (!same && ++different < 10) ADD_FAILURE() << ::testing::PrintToString(key) << " counts " << bytes;
  });
  EXPECT_EQ(different, 0);
}

// ---- Listing ----

struct Entry {
  bool isDirectory = false;
  bool isSymbolicLink = false;
  friend bool operator==(const Entry&, const Entry&) = default;
};

/// What readdir and fstatat say of a folder.
std::map<std::string, Entry> plainListing(const std::string& path) {
  std::map<std::string, Entry> entries;
  const UniqueDescriptor folder = openPath(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC).value();
  DIR* const stream = ::fdopendir(::dup(folder.get()));
  while (const dirent* entry = ::readdir(stream)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    struct stat itself{};
    struct stat target{};
    ::fstatat(folder.get(), entry->d_name, &itself, AT_SYMLINK_NOFOLLOW);
    ::fstatat(folder.get(), entry->d_name, &target, 0);
    entries[name] = {S_ISDIR(target.st_mode), S_ISLNK(itself.st_mode)};  // neither when they cannot be read
  }
  ::closedir(stream);
  return entries;
}

bool isInOrder(FileSystem& files, const SweeperItem& first, const SweeperItem& second) {
  if (first.sizeBytes != second.sizeBytes) return first.sizeBytes > second.sizeBytes;
  return files.nameSortKey(first.name) <= files.nameSortKey(second.name);
}

void expectGoodRow(const SweeperItem& row, const Entry& entry, const PlainCount& counted) {
  EXPECT_EQ((Entry{row.isDirectory, row.isSymbolicLink}), entry) << row.url.bytes();
  EXPECT_EQ(row.sizeIsPartialMinimum, row.isDirectory && counted.hadReadErrors) << row.url.bytes();
  if (row.isSymbolicLink) return;
  const auto bytes = counted.bytes.find(row.url.bytes());
  // What was not counted is a folder without counted files, or no regular file, or none of whose size is known.
  EXPECT_EQ(row.sizeBytes, bytes == counted.bytes.end() ? 0 : bytes->second) << row.url.bytes();
}

void expectGoodColumn(FileSystem& files, const std::string& folder, const SweepInventory& inventory,
                      const PlainCount& counted) {
  const auto rows = DiskSweeperScan::columnChildren(files, FileUrl(folder), inventory);
  ASSERT_TRUE(rows) << folder;
  const auto expected = plainListing(folder);
  ASSERT_EQ(rows->size(), expected.size()) << folder;
  for (std::size_t i = 0; i < rows->size() && !::testing::Test::HasFailure(); ++i) {
    const SweeperItem& row = (*rows)[i];
    ASSERT_TRUE(expected.contains(row.name)) << row.url.bytes();
    expectGoodRow(row, expected.at(row.name), counted);
    EXPECT_TRUE(i == 0 || isInOrder(files, (*rows)[i - 1], row)) << row.url.bytes();
  }
}

void expectGoodColumns(FileSystem& files, const SweepInventory& inventory, const PlainCount& counted) {
  const std::size_t step = counted.folders.size() / kMostFoldersListed + 1;
  for (std::size_t i = 0; i < counted.folders.size() && !::testing::Test::HasFailure(); i += step)
    expectGoodColumn(files, counted.folders[i], inventory, counted);
}

// ---- Pane ----

class PaneOnTree {
 public:
  explicit PaneOnTree(const std::string& root) : root_(root) {}

  void expectSweep(const PlainCount& expected) {
    pane_.beginBrowsing(FileUrl(root_));
    ASSERT_TRUE(mainThread_.runUntil([this] { return !pane_.showsStatusStrip(); }, std::chrono::seconds(100)));
    ASSERT_EQ(pane_.phase(), Phase::browsing) << pane_.loadError().value_or("");
    EXPECT_EQ(pane_.scanFileCount(), expected.fileCount);
    EXPECT_EQ(pane_.scanBytesSoFar(), expected.totalBytes);
    EXPECT_EQ(pane_.loadError().has_value(), expected.folders.empty());
    EXPECT_FALSE(pane_.footerStatus().empty());
    for (int depth = 0; depth < 40; ++depth) {
      clickEveryRow(static_cast<std::size_t>(depth));
      if (!openFirstFolder(static_cast<std::size_t>(depth))) break;
    }
  }

 private:
  static constexpr std::size_t kMostRowsClicked = 320;

  void clickEveryRow(std::size_t column) {
    const std::vector<SweeperItem> rows = pane_.columnChildren().at(column).items();
    for (std::size_t i = 0; i < std::min(rows.size(), kMostRowsClicked); ++i) click(rows[i], column);
  }

  void click(const SweeperItem& row, std::size_t column) {
    pane_.selectItem(row, column);
    EXPECT_TRUE(pane_.isRowSelected(row, column)) << row.url.bytes();
    const auto selected = pane_.currentSelectedItem();
    ASSERT_TRUE(selected) << row.url.bytes();
    EXPECT_EQ(*selected, row);
    EXPECT_EQ(pane_.columnChildren().size(), column + (row.isDirectory ? 2 : 1)) << row.url.bytes();
    EXPECT_TRUE(pane_.trashConfirmTitle().contains(displayText(row.name)));
    if (!row.isDirectory) {
      EXPECT_EQ(pane_.loadError(), std::nullopt) << row.url.bytes();
      return;
    }
    const auto direct = DiskSweeperScan::columnChildren(*files_, row.url, *pane_.inventory());
    EXPECT_EQ(pane_.loadError().has_value(), !direct.has_value()) << row.url.bytes();
    EXPECT_EQ(pane_.columnChildren().back().items(), direct.value_or(std::vector<SweeperItem>())) << row.url.bytes();
  }

  bool openFirstFolder(std::size_t column) {
    const std::vector<SweeperItem> rows = pane_.columnChildren().at(column).items();
    const auto folder =
        std::ranges::find_if(rows, [](const SweeperItem& row) { return row.isDirectory && !row.isSymbolicLink; });
    if (folder != rows.end()) pane_.selectItem(*folder, column);
    return folder != rows.end();
  }

  const std::string root_;
  // Destroyed after the pane, and after the scan, which has ended.
  std::unique_ptr<FileSystem> files_ = makePlatformFileSystem();
  FakeDesktop desktop_;
  MainThreadQueue mainThread_;
  BackgroundQueue background_;
  DiskSweeperPane pane_{*files_, desktop_, mainThread_, background_, {[] { return false; }, [](bool) {}}};
};

// ---- All of them ----

int checkTree(const HostileTree& hostile, const std::string& root) {
  const PlainCount expected = plainCount(root);
  EXPECT_EQ(expected.fileCount, hostile.fileCount) << "the plain count itself";
  const auto files = makePlatformFileSystem();
  std::optional<SweepInventory> inventory;
  for (const unsigned readers : {0, 8}) {
    inventory = scan(*files, FileUrl(root), readers);
    expectSameAsPlainCount(*inventory, expected);
  }
  expectGoodColumns(*files, *inventory, expected);
  PaneOnTree(root).expectSweep(expected);
  return 0;
}

/// Makes the tree and checks it.
int makeAndCheck(const HostileTree& hostile, const TemporaryTree& tree) {
  hostile.build(tree);
  OpenedFiles opened(hostile.isLarge ? std::vector<std::string>() : plainCount(tree.path()).folders);
  const auto check = [&] { return checkTree(hostile, tree.path()); };
  const ChildResult result = hostile.readByNobody ? runUnprivileged(check) : runInChild(check);
  EXPECT_EQ(result.exitCode, 0) << result.output;
  EXPECT_EQ(opened.take(), std::vector<std::string>())
      << "no file is ever opened, be it a FIFO, a device or a plain one";
  return 0;
}

void makeAndCheckIn(const std::string& parent, const HostileTree& hostile) {
  if (hostile.needs) DUNMERE_NEEDS(*hostile.needs);
  // In a folder of its own: a link to the parent must not lead where others make and remove files meanwhile.
  const TemporaryTree room(parent);
  const TemporaryTree tree(room.path());
  const ChildResult result = runInChild([&] { return makeAndCheck(hostile, tree); });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

std::vector<HostileTree> smallTrees() {
  std::vector<HostileTree> trees = hostileTrees();
  std::erase_if(trees, [](const HostileTree& tree) { return tree.isLarge; });
  return trees;
}

std::string nameOf(const ::testing::TestParamInfo<HostileTree>& tree) {
  return tree.param.name;
}

class HostileTreeInMemory : public ::testing::TestWithParam<HostileTree> {};
class HostileTreeOnDisk : public ::testing::TestWithParam<HostileTree> {};

TEST_P(HostileTreeInMemory, ScanListingAndPaneAgreeWithThePlainCount) {
  makeAndCheckIn(fastFolder(), GetParam());
}

TEST_P(HostileTreeOnDisk, ScanListingAndPaneAgreeWithThePlainCount) {
  makeAndCheckIn(::testing::TempDir(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, HostileTreeInMemory, ::testing::ValuesIn(hostileTrees()), nameOf);
INSTANTIATE_TEST_SUITE_P(Small, HostileTreeOnDisk, ::testing::ValuesIn(smallTrees()), nameOf);

// ---- What the system makes up ----

class MadeUpTree : public ::testing::TestWithParam<const char*> {};

TEST_P(MadeUpTree, ScanEndsAndAddsUpAndColumnsAreListed) {
  if (GetParam() == std::string_view("/sys")) DUNMERE_NEEDS(Feature::sys);
  const ChildResult result = runInChild([] {
    const FileUrl root(GetParam());
    const auto files = makePlatformFileSystem();
    for (const unsigned readers : {0, 8}) {
      const SweepInventory inventory = scan(*files, root, readers);
      EXPECT_TRUE(inventory.scanComplete);
      EXPECT_GT(inventory.fileCount, 1000);
      EXPECT_EQ(wrongSum(inventory), "");
      const auto column = DiskSweeperScan::columnChildren(*files, root, inventory);
      EXPECT_TRUE(column && !column->empty());
    }
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

INSTANTIATE_TEST_SUITE_P(All, MadeUpTree, ::testing::Values("/proc", "/sys"),
                         [](const auto& tree) { return std::string(tree.param + 1); });

}  // namespace
}  // namespace dunmere::test
