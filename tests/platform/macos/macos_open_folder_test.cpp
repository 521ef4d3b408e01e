// Reading folders as on macOS, where an open folder's position cannot be set.
#include "platform/macos/macos_open_folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <string>

#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

class MacosOpenFolderTest : public ::testing::Test {
 protected:
  std::shared_ptr<OpenFolder> open(std::string_view relative) {
    return MacosOpenFolder::open(descriptors, tree.url(relative), EntryDetail::sizes).value();
  }

  /// The names in the next batch.
  std::set<std::string> read(OpenFolder& folder) {
    EntryBatch batch;
    EXPECT_TRUE(folder.readEntries(batch));
    std::set<std::string> names;
    for (const auto& entry : batch.entries()) names.emplace(batch.name(entry));
    return names;
  }

  TemporaryTree tree;
  FolderDescriptors descriptors{4};
};

TEST_F(MacosOpenFolderTest, FolderThatWasClosedInTheMiddleIsReadOnWithEveryNameOnce) {
  constexpr std::size_t kFiles = 5000;
  tree.folder("wide");
  for (std::size_t i = 0; i < kFiles; ++i) tree.file("wide/a name of some length, number " + std::to_string(i));
  const auto folder = open("")->openChild("wide").value();
  std::set<std::string> seen;
  std::size_t batches = 0;
  for (auto names = read(*folder); !names.empty() && batches < 100; names = read(*folder), ++batches) {
    for (const std::string& name : names) EXPECT_TRUE(seen.insert(name).second) << name;
    descriptors.closeIdle();
  }
  EXPECT_EQ(seen.size(), kFiles);
  EXPECT_GT(batches, 3u);
}

TEST_F(MacosOpenFolderTest, FolderThatShrankWhileItWasClosedEnds) {
  tree.folder("wide");
  for (int i = 0; i < 2000; ++i) tree.file("wide/a name of some length, number " + std::to_string(i));
  const auto folder = open("")->openChild("wide").value();
  const auto first = read(*folder);
  EXPECT_LT(first.size(), 2000u);
  descriptors.closeIdle();
  for (int i = 10; i < 2000; ++i) tree.remove("wide/a name of some length, number " + std::to_string(i));
  EXPECT_TRUE(read(*folder).empty());
  EXPECT_TRUE(read(*folder).empty());
}

TEST_F(MacosOpenFolderTest, FolderThatMayBeReadButNotSearchedTellsNothing) {
  tree.folder("names");
  tree.file("names/file");
  tree.mode("names", 0444);
  const auto result = runUnprivileged([this] {
    EntryBatch batch;
    EXPECT_EQ(errorOf(open("names")->readEntries(batch)), EACCES);
    EXPECT_TRUE(batch.empty());
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

}  // namespace
}  // namespace dunmere::test
