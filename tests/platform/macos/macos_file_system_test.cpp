// The real file system, Trash and volumes of a Mac. Runs there alone; elsewhere it is only compiled and linked.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "engine/disk_sweeper_scan.h"
#include "platform/platform_file_system.h"
#include "platform/trash.h"
#include "tests/platform/folder_contents.h"

namespace dunmere::test {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::Field;

/// A private folder in the home folder, whose volume has a Trash; removed with the test.
class MacosFileSystemTest : public ::testing::Test {
 protected:
  MacosFileSystemTest() {
    std::string pattern = fs::canonical(std::getenv("HOME")).string() + "/dunmere-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category());
    folder = pattern;
  }
  ~MacosFileSystemTest() override { fs::remove_all(folder); }

  void write(const std::string& name, std::size_t bytes) const {
    std::ofstream file(folder / name, std::ios::binary);
    file << std::string(bytes, 'x');
    file.close();
    const int descriptor = ::open((folder / name).c_str(), O_RDONLY | O_CLOEXEC);
    ::fsync(descriptor);  // until then a file may have no blocks
    ::close(descriptor);
  }
  std::int64_t allocatedBytes(const std::string& name) const {
    struct stat status{};
    EXPECT_EQ(::lstat((folder / name).c_str(), &status), 0);
    return std::int64_t{512} * status.st_blocks;
  }
  FileUrl url(const std::string& name = "") const {
    return name.empty() ? FileUrl(folder.string()) : FileUrl((folder / name).string());
  }

  fs::path folder;
  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
};

TEST_F(MacosFileSystemTest, FolderTellsKindsAndSizes) {
  write("file", 5000);
  fs::create_directory(folder / "folder");
  fs::create_symlink("file", folder / "link");
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  const auto contents = contentsOf(*opened(*files, url()));
  ASSERT_EQ(contents.size(), 4u);
  EXPECT_EQ(contents.at("file").logicalBytes, 5000);
  EXPECT_EQ(contents.at("file").allocatedBytes, allocatedBytes("file"));
  EXPECT_EQ(contents.at("folder"), EntryAttributes{.kind = EntryKind::folder});
  EXPECT_EQ(contents.at("link"), EntryAttributes{.kind = EntryKind::symbolicLink});
  EXPECT_EQ(contents.at("fifo"), EntryAttributes{.kind = EntryKind::other});
}

TEST_F(MacosFileSystemTest, WideFolderComesInManyBatches) {
  constexpr int kFiles = 3000;
  for (int i = 0; i < kFiles; ++i) std::ofstream(folder / ("a file of a wide folder, number " + std::to_string(i)));
  EXPECT_EQ(contentsOf(*opened(*files, url())).size(), std::size_t{kFiles});
}

TEST_F(MacosFileSystemTest, LinkLeadsToItsTargetsPath) {
  write("file", 1);
  fs::create_directory(folder / "folder");
  fs::create_symlink("../file", folder / "folder/link");
  const auto target = opened(*files, url("folder"))->resolveLink("link");
  EXPECT_EQ(target.url, url("file"));
  ASSERT_TRUE(target.attributes);
  EXPECT_EQ(target.attributes->kind, EntryKind::regularFile);
  EXPECT_EQ(target.attributes->allocatedBytes, allocatedBytes("file"));
}

TEST_F(MacosFileSystemTest, LinkIsNotOpenedAsAFolder) {
  fs::create_directory(folder / "folder");
  fs::create_symlink("folder", folder / "link");
  EXPECT_FALSE(opened(*files, url())->openChild("link"));
  EXPECT_TRUE(opened(*files, url())->openChild("folder"));
}

TEST_F(MacosFileSystemTest, ScanAddsUpTheTreeAndPassesPackagesOver) {
  fs::create_directories(folder / "a/b");
  fs::create_directories(folder / "Some.app/Contents");
  write("one", 10'000);
  write("a/b/two", 100'000);
  write("Some.app/Contents/three", 50'000);
  const auto inventory = DiskSweeperScan::runProgressiveScan(*files, url(), [](const SweepInventory&) {}).get();
  ASSERT_TRUE(inventory);
  EXPECT_EQ(inventory->fileCount, 2);
  EXPECT_EQ(inventory->totalFileBytes, allocatedBytes("one") + allocatedBytes("a/b/two"));
  EXPECT_FALSE(inventory->hadReadErrors);
}

TEST_F(MacosFileSystemTest, BootVolumeHasANameAndSpace) {
  EXPECT_THAT(files->mountedVolumes().value(), Contains(Field(&VolumeMount::url, FileUrl("/"))));
  const auto values = files->volumeValues(FileUrl("/"));
  ASSERT_TRUE(values);
  EXPECT_EQ(values->isBrowsable, true);
  EXPECT_FALSE(values->name.value_or("").empty());
  EXPECT_GT(values->totalBytes.value_or(0), values->availableBytes.value_or(0));
  EXPECT_GT(values->availableForImportantUsageBytes.value_or(-1), -1);
}

TEST_F(MacosFileSystemTest, HelperVolumesOfTheSystemAreNotOffered) {
  const auto mounted = files->mountedVolumes().value();
  EXPECT_THAT(mounted, Contains(Field(&VolumeMount::url, FileUrl("/System/Volumes/Data"))));
  const auto offered = DiskSweeperScan::listVolumes(*files);
  EXPECT_TRUE(
      std::ranges::none_of(offered, [](const SweeperVolume& v) { return v.url.path().starts_with("/System"); }));
  EXPECT_TRUE(std::ranges::any_of(offered, [](const SweeperVolume& v) { return v.url.path() == "/"; }));
}

TEST_F(MacosFileSystemTest, ClockGoesOn) {
  const auto before = files->now();
  while (files->now() == before) std::this_thread::yield();
  EXPECT_GT(files->now(), before);
}

TEST_F(MacosFileSystemTest, NamesAreOrderedForPeople) {
  EXPECT_LT(files->nameSortKey("alpha"), files->nameSortKey("Beta"));
  EXPECT_EQ(files->nameSortKey("README"), files->nameSortKey("readme"));
}

TEST_F(MacosFileSystemTest, ItemGoesToTheTrashAndALinkGoesItself) {
  write("target", 1);
  fs::create_symlink("target", folder / "link");
  Trash trash(*files);
  EXPECT_TRUE(trash.hold(url("link"))->moveToTrash());
  EXPECT_FALSE(fs::is_symlink(folder / "link"));
  EXPECT_TRUE(fs::exists(folder / "target"));
  EXPECT_TRUE(trash.hold(url("target"))->moveToTrash());
  EXPECT_FALSE(fs::exists(folder / "target"));
}

TEST_F(MacosFileSystemTest, OnlyTheHeldItemGoesToTheTrash) {
  write("item", 1);
  Trash trash(*files);
  const auto held = trash.hold(url("item"));
  fs::rename(folder / "item", folder / "elsewhere");
  EXPECT_EQ(errorOf(held->moveToTrash()), ENOENT);
  write("item", 2);
  EXPECT_EQ(errorOf(held->moveToTrash()), ESTALE);
  EXPECT_TRUE(fs::exists(folder / "item"));
}

TEST_F(MacosFileSystemTest, RootAndMountPointsDoNotGoToTheTrash) {
  Trash trash(*files);
  EXPECT_EQ(errorOf(trash.hold(FileUrl("/"))->moveToTrash()), EBUSY);
  EXPECT_EQ(errorOf(trash.hold(FileUrl("/System/Volumes/Data"))->moveToTrash()), EBUSY);
  EXPECT_EQ(errorOf(trash.hold(url("missing"))->moveToTrash()), ENOENT);
}

}  // namespace
}  // namespace dunmere::test
