// Where symbolic links lead.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <string>

#include "platform/platform_file_system.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

class LinkResolutionTest : public ::testing::Test {
 protected:
  LinkTarget resolve(std::string_view name, std::string_view folder = {}) {
    return opened(*files, tree.url(folder), EntryDetail::kinds)->resolveLink(name);
  }

  TemporaryTree tree;
  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
};

TEST_F(LinkResolutionTest, ChainOfLinksLeadsToItsEnd) {
  tree.folder("a/b");
  tree.file("a/b/target", 4000);
  tree.link("a/second", "b/../b/target");
  tree.link("first", "a/second");
  const LinkTarget target = resolve("first");
  EXPECT_EQ(target.url, tree.url("a/b/target"));
  EXPECT_EQ(target.attributes->kind, EntryKind::regularFile);
  EXPECT_EQ(target.attributes->logicalBytes, 4000);
  EXPECT_EQ(target.attributes->allocatedBytes, tree.allocatedBytes("a/b/target"));
}

TEST_F(LinkResolutionTest, LinksInThePathToTheFolderAreResolvedToo) {
  tree.folder("real/inner");
  tree.link("real/link", "inner");
  tree.link("alias", "real");
  const LinkTarget target = resolve("link", "alias");
  EXPECT_EQ(target.url, tree.url("real/inner"));
  EXPECT_EQ(target.attributes, EntryAttributes{.kind = EntryKind::folder});
}

TEST_F(LinkResolutionTest, DanglingLinkKeepsItsOwnPath) {
  tree.link("dangling", "nowhere/at/all");
  EXPECT_EQ(resolve("dangling").url, tree.url("dangling"));
  EXPECT_EQ(resolve("dangling").attributes, std::nullopt);
}

TEST_F(LinkResolutionTest, LoopKeepsItsOwnPath) {
  tree.link("one", "two");
  tree.link("two", "one");
  EXPECT_EQ(resolve("one").url, tree.url("one"));
  EXPECT_EQ(resolve("one").attributes, std::nullopt);
}

TEST_F(LinkResolutionTest, OwnPathIsStandardized) {
  tree.folder("folder");
  tree.link("folder/dangling", "nowhere");
  const auto folder = opened(*files, FileUrl(tree.path("folder") + "/..//folder/"));
  EXPECT_EQ(folder->resolveLink("dangling").url, tree.url("folder/dangling"));
}

TEST_F(LinkResolutionTest, OwnPathBelowAnOpenedFolder) {
  tree.folder("a/b");
  tree.link("a/b/dangling", "nowhere");
  const auto folder = opened(*files, tree.url())->openChild("a").value()->openChild("b").value();
  EXPECT_EQ(folder->resolveLink("dangling").url, tree.url("a/b/dangling"));
}

TEST_F(LinkResolutionTest, TargetMayHaveAnyBytesAndEvenLookDeleted) {
  const std::string name = "\xff\n (deleted)";
  tree.file(name, 10);
  tree.link("link", name);
  EXPECT_EQ(resolve("link").url, tree.url(name));
}

TEST_F(LinkResolutionTest, LinkToSomethingWithoutAPathKeepsItsOwn) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  tree.link("pipe", "/proc/self/fd/" + std::to_string(ends[0]));
  EXPECT_EQ(resolve("pipe").url, tree.url("pipe"));
  EXPECT_EQ(resolve("pipe").attributes, EntryAttributes{.kind = EntryKind::other});
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST_F(LinkResolutionTest, LinkIntoAFolderWithoutPermissionCannotBeResolved) {
  tree.folder("closed");
  tree.file("closed/file", 10);
  tree.link("link", "closed/file");
  tree.mode("closed", 0);
  const auto result = runUnprivileged([this] {
    EXPECT_EQ(resolve("link").url, tree.url("link"));
    EXPECT_EQ(resolve("link").attributes, std::nullopt);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(LinkResolutionTest, UnreadableTargetIsResolvedAllTheSame) {
  tree.file("file", 10);
  tree.mode("file", 0);
  tree.link("link", "file");
  const auto result = runUnprivileged([this] {
    EXPECT_EQ(resolve("link").url, tree.url("file"));
    EXPECT_EQ(resolve("link").attributes->logicalBytes, 10);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(LinkResolutionTest, TargetWithALongerPathThanTheSystemTellsKeepsItsAttributes) {
  tree.folder("deep");
  tree.chain("deep", 30, std::string(200, 'd'));
  std::shared_ptr<OpenFolder> folder = opened(*files, tree.url("deep"));
  std::string path = tree.path("deep");
  for (int i = 0; i < 29; ++i) {
    folder = folder->openChild(std::string(200, 'd')).value();
    path += "/" + std::string(200, 'd');
  }
  ASSERT_GT(path.size(), std::size_t{PATH_MAX});
  // Any name is followed, link or not; no link need be made so far down.
  const LinkTarget target = folder->resolveLink(std::string(200, 'd'));
  EXPECT_EQ(target.url, FileUrl(path + "/" + std::string(200, 'd')));
  EXPECT_EQ(target.attributes, EntryAttributes{.kind = EntryKind::folder});
}

}  // namespace
}  // namespace dunmere::test
