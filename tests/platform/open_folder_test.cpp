// Folders of the real file system: what is in them, and how they fail.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "platform/platform_file_system.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

class OpenFolderTest : public ::testing::Test {
 protected:
  std::map<std::string, EntryAttributes> contents(std::string_view relative = {},
                                                  EntryDetail detail = EntryDetail::sizes) {
    return contentsOf(*opened(*files, tree.url(relative), detail), detail);
  }

  TemporaryTree tree;
  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
};

void makeOneOfEach(const TemporaryTree& tree) {
  tree.file("file", 5000);
  tree.folder("folder");
  tree.link("link", "file");
  tree.fifo("fifo");
  tree.socket("socket");
}

void expectKinds(const std::map<std::string, EntryAttributes>& contents) {
  ASSERT_EQ(contents.size(), 5u);
  EXPECT_EQ(contents.at("file").kind, EntryKind::regularFile);
  EXPECT_EQ(contents.at("folder").kind, EntryKind::folder);
  EXPECT_EQ(contents.at("link").kind, EntryKind::symbolicLink);
  EXPECT_EQ(contents.at("fifo").kind, EntryKind::other);
  EXPECT_EQ(contents.at("socket").kind, EntryKind::other);
}

TEST_F(OpenFolderTest, WalkTellsKindsAndSizesOfRegularFilesOnly) {
  makeOneOfEach(tree);
  const auto all = contents();
  expectKinds(all);
  EXPECT_EQ(all.at("file").logicalBytes, 5000);
  EXPECT_EQ(all.at("file").allocatedBytes, tree.allocatedBytes("file"));
  EXPECT_GE(all.at("file").allocatedBytes, 5000);
  for (const char* name : {"folder", "link", "fifo", "socket"}) {
    EXPECT_EQ(all.at(name).allocatedBytes, EntryAttributes::kAbsent) << name;
    EXPECT_EQ(all.at(name).logicalBytes, EntryAttributes::kAbsent) << name;
  }
}

TEST_F(OpenFolderTest, ListingTellsKindsWithoutSizes) {
  makeOneOfEach(tree);
  const auto all = contents({}, EntryDetail::kinds);
  expectKinds(all);
  EXPECT_EQ(all.at("file"), EntryAttributes{.kind = EntryKind::regularFile});
}

TEST_F(OpenFolderTest, DeviceIsOther) {
  if (::geteuid() != 0) {
    EXPECT_EQ(contentsOf(*opened(*files, FileUrl("/dev"))).at("null").kind, EntryKind::other);
    return;
  }
  tree.device("device");
  EXPECT_EQ(contents().at("device"), EntryAttributes{.kind = EntryKind::other});
  EXPECT_EQ(opened(*files, tree.url())->attributes("device"), EntryAttributes{.kind = EntryKind::other});
}

TEST_F(OpenFolderTest, EmptyFolderEndsAtOnceAndStaysEnded) {
  const auto folder = opened(*files, tree.url());
  EXPECT_TRUE(contentsOf(*folder).empty());
  tree.file("late");
  EXPECT_TRUE(contentsOf(*folder).empty());
}

TEST_F(OpenFolderTest, SparseFileHasLengthWithoutSpace) {
  tree.sparseFile("sparse", std::int64_t{1} << 40);
  const auto attributes = contents().at("sparse");
  EXPECT_EQ(attributes.logicalBytes, std::int64_t{1} << 40);
  EXPECT_EQ(attributes.allocatedBytes, 0);
  EXPECT_EQ(attributes.countedBytes(), 0);
}

TEST_F(OpenFolderTest, EmptyFileHasReportedZero) {
  tree.file("empty");
  EXPECT_EQ(contents().at("empty").allocatedBytes, 0);
  EXPECT_EQ(contents().at("empty").logicalBytes, 0);
}

TEST_F(OpenFolderTest, HardLinksReportTheirFullSizeEach) {
  tree.file("one", 100000);
  tree.hardLink("one", "two");
  const auto all = contents();
  EXPECT_EQ(all.at("one"), all.at("two"));
  EXPECT_GE(all.at("two").allocatedBytes, 100000);
}

TEST_F(OpenFolderTest, NamesAreAnyBytes) {
  const std::vector<std::string> names = {"\xff\xfe",     "caf\xe9",      "new\nline", " ",
                                          "\x01\x1f\x7f", "...",          "-rf",       std::string(255, 'n'),
                                          "a\\b",         "\xe2\x80\xae", ".hidden",   "..x"};
  for (const std::string& name : names) tree.file(name);
  const auto all = contents();
  EXPECT_EQ(all.size(), names.size());
  const auto folder = opened(*files, tree.url());
  for (const std::string& name : names) {
    EXPECT_TRUE(all.contains(name)) << ::testing::PrintToString(name);
    EXPECT_TRUE(folder->attributes(name)) << ::testing::PrintToString(name);
  }
}

TEST_F(OpenFolderTest, FolderOfAnyNameOpens) {
  const std::string name = "\xff\n" + std::string(253, 'd');
  tree.folder(name + "/inner");
  const auto child = opened(*files, tree.url())->openChild(name).value();
  EXPECT_TRUE(contentsOf(*child).contains("inner"));
}

TEST_F(OpenFolderTest, WideFolderComesInManyBatchesWithEveryNameOnce) {
  constexpr int kFiles = 100'000;
  tree.folder("wide");
  const std::string folder = tree.path("wide") + "/";
  tree.file("wide/0");
  // Links to one file are made faster than files, and are files all the same; the file system allows only so many.
  for (int i = 1; i < kFiles; ++i) {
    if (i % 30'000 == 0) {
      tree.file("wide/" + std::to_string(i));
      continue;
    }
    tree.hardLink("wide/" + std::to_string(i - i % 30'000), "wide/" + std::to_string(i));
  }
  const auto all = contents("wide");
  EXPECT_EQ(all.size(), std::size_t{kFiles});
  EXPECT_TRUE(all.contains("99999"));
  tree.remove("wide");
}

TEST_F(OpenFolderTest, BatchIsBounded) {
  for (int i = 0; i < 5000; ++i) tree.file("a file with a name of middle length " + std::to_string(i));
  const auto folder = opened(*files, tree.url());
  EntryBatch batch;
  ASSERT_TRUE(folder->readEntries(batch));
  EXPECT_GT(batch.size(), 100u);
  EXPECT_LT(batch.size(), 2500u);
}

TEST_F(OpenFolderTest, RootThatIsALinkIsFollowed) {
  tree.folder("real/inside");
  tree.link("link", "real");
  EXPECT_TRUE(contents("link").contains("inside"));
  EXPECT_TRUE(contentsOf(*opened(*files, FileUrl(tree.path("link") + "/"))).contains("inside"));
}

TEST_F(OpenFolderTest, LinkBelowTheRootIsNeverFollowed) {
  tree.folder("real/inside");
  tree.link("link", "real");
  EXPECT_EQ(errorOf(opened(*files, tree.url())->openChild("link")), ENOTDIR);
}

TEST_F(OpenFolderTest, FailuresCarryTheSystemsCodeAndThePath) {
  tree.file("file");
  tree.link("dangling", "nowhere");
  tree.link("circle", "circle");
  const auto code = [this](std::string_view relative) {
    const auto result = files->openFolder(tree.url(relative), EntryDetail::kinds);
    EXPECT_EQ(result.error().path, tree.url(relative));
    EXPECT_EQ(result.error().attempt, SweepAttempt::openFolder);
    return result.error().code;
  };
  EXPECT_EQ(code("missing"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(code("missing/below"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(code("file"), std::errc::not_a_directory);
  EXPECT_EQ(code("dangling"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(code("circle"), std::errc::too_many_symbolic_link_levels);
  EXPECT_EQ(code(std::string(256, 'x')), std::errc::filename_too_long);
  EXPECT_EQ(code(std::string(5000, 'x')), std::errc::filename_too_long);
  EXPECT_EQ(code(std::string("fi\0le", 5)), std::errc::invalid_argument);
  EXPECT_EQ(errorOf(files->openFolder(FileUrl(), EntryDetail::kinds)), ENOENT);
}

TEST_F(OpenFolderTest, FailureBelowNamesThePathBelow) {
  tree.folder("a/b");
  const auto folder = opened(*files, tree.url())->openChild("a").value()->openChild("b").value();
  const auto missing = folder->openChild("missing");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().path, tree.url("a/b/missing"));
  EXPECT_EQ(missing.error().code, std::errc::no_such_file_or_directory);
}

TEST_F(OpenFolderTest, FifoWithoutWriterIsNeverWaitedFor) {
  tree.fifo("fifo");
  EXPECT_EQ(errorOf(files->openFolder(tree.url("fifo"), EntryDetail::kinds)), ENOTDIR);
  const auto folder = opened(*files, tree.url());
  EXPECT_EQ(errorOf(folder->openChild("fifo")), ENOTDIR);
  EXPECT_EQ(folder->attributes("fifo"), EntryAttributes{.kind = EntryKind::other});
  tree.link("link", "fifo");
  EXPECT_EQ(folder->resolveLink("link").attributes, EntryAttributes{.kind = EntryKind::other});
}

TEST_F(OpenFolderTest, FifoIsNotOpenedByReadingItsFolder) {
  tree.fifo("fifo");
  // A writer that does not wait gets through only while somebody has the FIFO open.
  std::atomic<bool> done = false;
  std::atomic<int> writers = 0;
  std::thread watcher([&] {
    while (!done) {
      const int writer = ::open(tree.path("fifo").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
      if (writer < 0) continue;
      ++writers;
      ::close(writer);
    }
  });
  for (int i = 0; i < 200; ++i) contents();
  done = true;
  watcher.join();
  EXPECT_EQ(writers, 0);
}

TEST_F(OpenFolderTest, FolderWithoutPermissionFailsForItsReader) {
  tree.folder("closed");
  tree.mode("closed", 0);
  const auto result = runUnprivileged([this] {
    EXPECT_EQ(errorOf(files->openFolder(tree.url("closed"), EntryDetail::kinds)), EACCES);
    EXPECT_EQ(errorOf(opened(*files, tree.url())->openChild("closed")), EACCES);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(OpenFolderTest, ReadableFolderWithoutSearchPermissionTellsNamesOnly) {
  tree.folder("names/inner");
  tree.file("names/file", 1);
  tree.mode("names", 0444);
  const auto result = runUnprivileged([this] {
    const auto walked = contents("names");
    EXPECT_EQ(walked.at("file").kind, EntryKind::other);
    EXPECT_EQ(walked.at("inner").kind, EntryKind::folder);
    EXPECT_EQ(errorOf(opened(*files, tree.url("names"))->openChild("inner")), EACCES);
    for (const auto& [name, attributes] : contents("names", EntryDetail::kinds))
      EXPECT_EQ(attributes, EntryAttributes()) << name << " has attributes that cannot be read";
    EXPECT_EQ(opened(*files, tree.url("names"))->attributes("file"), std::nullopt);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(OpenFolderTest, AttributesAreThoseOfTheEntryItself) {
  tree.file("file", 3000);
  tree.link("link", "file");
  const auto folder = opened(*files, tree.url(), EntryDetail::kinds);
  EXPECT_EQ(folder->attributes("file")->logicalBytes, 3000);
  EXPECT_EQ(folder->attributes("link"), EntryAttributes{.kind = EntryKind::symbolicLink});
  EXPECT_EQ(folder->attributes("missing"), std::nullopt);
  EXPECT_EQ(folder->attributes(""), std::nullopt);
}

TEST_F(OpenFolderTest, FolderThatVanishedWhileOpenIsEmpty) {
  tree.folder("gone");
  const auto folder = opened(*files, tree.url("gone"));
  tree.remove("gone");
  EXPECT_TRUE(contentsOf(*folder).empty());
  EXPECT_EQ(errorOf(folder->openChild("anything")), ENOENT);
}

TEST_F(OpenFolderTest, FolderReplacedByALinkIsNotFollowed) {
  tree.folder("secret/inside");
  tree.folder("folder");
  const auto folder = opened(*files, tree.url());
  ASSERT_EQ(contentsOf(*folder).at("folder").kind, EntryKind::folder);
  tree.remove("folder");
  tree.link("folder", "secret");
  EXPECT_EQ(errorOf(folder->openChild("folder")), ENOTDIR);
}

TEST_F(OpenFolderTest, OpenFolderIsReadWhereverItWasMoved) {
  tree.folder("before/child");
  const auto folder = opened(*files, tree.url("before"));
  tree.rename("before", "after");
  EXPECT_TRUE(folder->openChild("child"));
  EXPECT_TRUE(contentsOf(*folder).contains("child"));
}

}  // namespace
}  // namespace dunmere::test
