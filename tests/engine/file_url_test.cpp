#include "engine/file_url.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

#include "tests/support/print_values.h"

namespace dunmere {
namespace {

struct Spelling {
  const char* bytes;
  const char* expected;
};

std::string label(const Spelling& spelling) {
  return std::string("of \"") + spelling.bytes + "\"";
}

TEST(FileUrl, KeyRemovesDotsSlashesAndTheTrailingSlash) {
  const Spelling spellings[] = {{"/", "/"},
                                {"//", "/"},
                                {"/..", "/"},
                                {"/../..", "/"},
                                {"/.", "/"},
                                {"/./", "/"},
                                {"/../a", "/a"},
                                {"/a", "/a"},
                                {"/a/", "/a"},
                                {"//a///b/", "/a/b"},
                                {"/.//tmp/ABC/..", "/tmp"},
                                {"/a/./b/.", "/a/b"},
                                {"/a/b/../c", "/a/c"},
                                {"/a/b/../../c", "/c"},
                                {"/a/../../b", "/b"},
                                {"/a/b/..", "/a"},
                                {"/private/tmp", "/private/tmp"},
                                {"/private/System/foo", "/private/System/foo"}};
  for (const Spelling& spelling : spellings) {
    EXPECT_EQ(FileUrl(spelling.bytes).key(), spelling.expected) << label(spelling);
    EXPECT_EQ(FileUrl(spelling.bytes).standardized(), FileUrl(spelling.expected)) << label(spelling);
  }
}

TEST(FileUrl, DotsInsideANameAreOrdinaryBytes) {
  for (const char* path : {"/...", "/.hidden", "/a..", "/..a", "/a/.b/c.", "/a b/ c "}) {
    EXPECT_EQ(FileUrl(path).key(), path);
  }
}

TEST(FileUrl, TheEmptyPathStaysEmpty) {
  EXPECT_EQ(FileUrl().key(), "");
  EXPECT_EQ(FileUrl().path(), "");
  EXPECT_EQ(FileUrl().lastPathComponent(), "");
  EXPECT_EQ(FileUrl().standardized(), FileUrl());
}

TEST(FileUrl, AKeyIsItsOwnKey) {
  for (const char* path : {"/", "/../a/./b//", "//x/..", "/a/b/c/"}) {
    const std::string key = FileUrl(path).key();
    EXPECT_EQ(FileUrl(key).key(), key);
  }
}

TEST(FileUrl, PathDropsTrailingSlashesAndStandardizesNothing) {
  const Spelling spellings[] = {{"/", "/"},         {"//", "/"},          {"/a/b/", "/a/b"},      {"/a/b///", "/a/b"},
                                {"/a//b", "/a//b"}, {"/a/./b", "/a/./b"}, {"/a/../b/", "/a/../b"}};
  for (const Spelling& spelling : spellings) {
    EXPECT_EQ(FileUrl(spelling.bytes).path(), spelling.expected) << label(spelling);
    EXPECT_EQ(FileUrl(spelling.bytes).bytes(), spelling.bytes) << label(spelling);
  }
}

TEST(FileUrl, LastPathComponent) {
  const Spelling spellings[] = {{"/", "/"},
                                {"///", "/"},
                                {"/a", "a"},
                                {"/a/b/", "b"},
                                {"/a/b//", "b"},
                                {"/a//b", "b"},
                                {"/dir/.hidden", ".hidden"},
                                {"/a b/c d", "c d"}};
  for (const Spelling& spelling : spellings) {
    EXPECT_EQ(FileUrl(spelling.bytes).lastPathComponent(), spelling.expected) << label(spelling);
  }
}

TEST(FileUrl, TheParentClimbEndsAtTheRoot) {
  const Spelling spellings[] = {{"/a/b", "/a"}, {"/a/b/", "/a"}, {"/a", "/"},  {"/a/", "/"},
                                {"/", "/"},     {"/a//b", "/a"}, {"//a", "/"}, {"/a/b/c", "/a/b"}};
  for (const Spelling& spelling : spellings) {
    EXPECT_EQ(FileUrl(spelling.bytes).deletingLastPathComponent(), FileUrl(spelling.expected)) << label(spelling);
  }
}

TEST(FileUrl, ANameAloneHasNoParent) {
  EXPECT_EQ(FileUrl("a").deletingLastPathComponent(), FileUrl());
}

TEST(FileUrl, AppendingPutsExactlyOneSlashBetween) {
  EXPECT_EQ(FileUrl("/").appending("a"), FileUrl("/a"));
  EXPECT_EQ(FileUrl("/a").appending("b"), FileUrl("/a/b"));
  EXPECT_EQ(FileUrl("/a/").appending("b"), FileUrl("/a/b"));
}

TEST(FileUrl, BytesThatAreNotTextPassThroughUnchanged) {
  const std::string name = "caf\xe9 \xff\xfe\n\x01%20";
  const FileUrl url = FileUrl("/vol").appending(name);
  EXPECT_EQ(url.bytes(), "/vol/" + name);
  EXPECT_EQ(url.key(), "/vol/" + name);
  EXPECT_EQ(url.lastPathComponent(), name);
  EXPECT_EQ(FileUrl("/vol/./" + name + "/").key(), url.key());
}

TEST(FileUrl, ComposedAndDecomposedNamesAreDifferentKeys) {
  EXPECT_NE(FileUrl("/caf\u00e9").key(), FileUrl("/cafe\u0301").key());
}

TEST(FileUrl, EqualityComparesTheBytesAsGiven) {
  EXPECT_EQ(FileUrl("/a"), FileUrl("/a"));
  EXPECT_NE(FileUrl("/a"), FileUrl("/a/"));
  EXPECT_EQ(FileUrl("/a").path(), FileUrl("/a/").path());
  EXPECT_LT(FileUrl("/a"), FileUrl("/b"));
  const std::unordered_set<FileUrl> urls = {FileUrl("/a"), FileUrl("/a"), FileUrl("/a/")};
  EXPECT_EQ(urls.size(), 2u);
}

TEST(FileUrl, AVeryLongPathKeepsItsKey) {
  std::string path;
  for (int depth = 0; depth < 20'000; ++depth) path += "/d";
  EXPECT_EQ(FileUrl(path + "/.//").key(), path);
  EXPECT_EQ(FileUrl(path + "/x/..").key(), path);
}

}  // namespace
}  // namespace dunmere
