// The stamps by which a listing knows, without reading it, that a folder has the same entries as before.
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <chrono>
#include <optional>
#include <thread>

#include "platform/platform_file_system.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

std::optional<FolderStamp> stampOf(FileSystem& files, const FileUrl& folder) {
  return files.openFolder(folder, EntryDetail::kinds).value()->stamp();
}

/// Longer than the system needs to tell two changes of a folder apart.
void letTimePass() {
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
}

class FolderStampTest : public testing::Test {
 protected:
  FolderStampTest() { tree.folder("folder"); }

  std::optional<FolderStamp> stamp() { return stampOf(*files, tree.url("folder")); }

  template <typename Change>
  void expectAnotherStampAfter(Change change) {
    letTimePass();
    const auto before = stamp();
    ASSERT_TRUE(before);
    change();
    EXPECT_FALSE(stamp()) << "the clock has not gone on";
    letTimePass();
    const auto after = stamp();
    ASSERT_TRUE(after);
    EXPECT_NE(*before, *after);
  }

  TemporaryTree tree{fastFolder()};
  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
};

TEST_F(FolderStampTest, StaysWhileTheFolderKeepsItsEntries) {
  tree.file("folder/file", 10);
  letTimePass();
  const auto before = stamp();
  ASSERT_TRUE(before);
  tree.file("folder/file", 20'000);  // another size, the same entry
  EXPECT_EQ(stamp(), before);
}

TEST_F(FolderStampTest, ChangesWithAnAddedEntry) {
  expectAnotherStampAfter([this] { tree.file("folder/file", 10); });
}

TEST_F(FolderStampTest, ChangesWithARemovedEntry) {
  tree.file("folder/file", 10);
  expectAnotherStampAfter([this] { tree.remove("folder/file"); });
}

TEST_F(FolderStampTest, ChangesWithAnEntryOfAnotherKind) {
  tree.file("folder/file", 10);
  expectAnotherStampAfter([this] {
    tree.remove("folder/file");
    tree.folder("folder/file");
  });
}

TEST_F(FolderStampTest, AnotherFolderInItsPlaceHasAnother) {
  tree.folder("other");
  letTimePass();
  const auto before = stamp();
  ASSERT_TRUE(before);
  tree.rename("folder", "former");
  tree.rename("other", "folder");
  EXPECT_NE(stamp(), before);
}

TEST_F(FolderStampTest, AnotherMountInItsPlaceHasAnother) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const auto result = runWithOwnMounts([this] {
    const std::string disk = tree.path("folder");
    EXPECT_EQ(::mount(disk.c_str(), disk.c_str(), nullptr, MS_BIND, nullptr), 0);
    letTimePass();
    const auto before = stamp();
    EXPECT_TRUE(before);
    EXPECT_EQ(::mount(disk.c_str(), disk.c_str(), nullptr, MS_BIND, nullptr), 0);  // the same folder, once more
    EXPECT_NE(stamp(), before);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(FolderStampTest, FileSystemsThatMayKnowOfChangesTooLateGiveNone) {
  DUNMERE_NEEDS(Feature::sys);
  EXPECT_FALSE(stampOf(*files, FileUrl("/proc")));
  EXPECT_FALSE(stampOf(*files, FileUrl("/sys")));
}

}  // namespace
}  // namespace dunmere::test
