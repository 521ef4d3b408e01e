#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tests/support/print_values.h"

namespace dunmere::test {
namespace {

using Strings = std::vector<std::string>;

class MemoryFileSystemTest : public testing::Test {
 protected:
  std::shared_ptr<OpenFolder> open(const std::string& path, EntryDetail detail = EntryDetail::sizes) {
    return fileSystem_.openFolder(FileUrl(path), detail).value();
  }
  std::error_code errorOf(const std::string& path) {
    const auto folder = fileSystem_.openFolder(FileUrl(path), EntryDetail::sizes);
    return folder ? std::error_code() : folder.error().code;
  }
  static std::vector<std::pair<std::string, EntryAttributes>> entriesOf(OpenFolder& folder,
                                                                        EntryDetail detail = EntryDetail::sizes) {
    std::vector<std::pair<std::string, EntryAttributes>> entries;
    EntryBatch batch;
    do {
      folder.readEntries(batch).value();
      if (detail == EntryDetail::sizes) folder.measure(batch).value();
      for (const auto& entry : batch.entries()) entries.emplace_back(batch.name(entry), entry.attributes);
    } while (!batch.empty());
    return entries;
  }
  static Strings namesIn(OpenFolder& folder) {
    Strings names;
    for (const auto& [name, attributes] : entriesOf(folder)) names.push_back(name);
    return names;
  }

  MemoryFileSystem fileSystem_;
};

TEST_F(MemoryFileSystemTest, EntriesComeInTheOrderOfAddingInBatches) {
  for (const char* path : {"/d/z", "/d/a", "/d/m", "/d/b"}) fileSystem_.addFile(path, 1);
  const auto folder = open("/d");
  EntryBatch batch;
  ASSERT_TRUE(folder->readEntries(batch));
  EXPECT_EQ(batch.size(), 3u);
  ASSERT_TRUE(folder->readEntries(batch));
  EXPECT_EQ(batch.size(), 1u);
  ASSERT_TRUE(folder->readEntries(batch));
  EXPECT_TRUE(batch.empty());
  EXPECT_EQ(namesIn(*open("/d")), (Strings{"z", "a", "m", "b"}));
}

TEST_F(MemoryFileSystemTest, DetailDecidesWhatEntriesTell) {
  fileSystem_.addFile("/d/file", 10);
  fileSystem_.addLink("/d/link", "file");
  fileSystem_.addFile("/d/hidden", 20);
  fileSystem_.hideAttributes("/d/hidden");
  constexpr std::int64_t kAbsent = EntryAttributes::kAbsent;
  using Entries = std::vector<std::pair<std::string, EntryAttributes>>;
  EXPECT_EQ(entriesOf(*open("/d", EntryDetail::sizes)),
            (Entries{{"file", {EntryKind::regularFile, false, 10, kAbsent}},
                     {"link", {EntryKind::symbolicLink, false, kAbsent, 4}},
                     {"hidden", {EntryKind::other, false, kAbsent, kAbsent}}}));
  EXPECT_EQ(entriesOf(*open("/d", EntryDetail::kinds), EntryDetail::kinds),
            (Entries{{"file", {EntryKind::regularFile, false, kAbsent, kAbsent}},
                     {"link", {EntryKind::symbolicLink, false, kAbsent, kAbsent}},
                     {"hidden", {EntryKind::other, false, kAbsent, kAbsent}}}));
}

TEST_F(MemoryFileSystemTest, ABatchOfHiddenEntriesDoesNotEndTheFolder) {
  for (const char* path : {"/d/1", "/d/2", "/d/3", "/d/4"}) fileSystem_.addLink(path, "x");
  for (const char* path : {"/d/1", "/d/2", "/d/3"}) fileSystem_.hideAttributes(path);
  EXPECT_EQ(namesIn(*open("/d")), Strings{"4"});
}

TEST_F(MemoryFileSystemTest, OpeningFailsAsOnASystem) {
  fileSystem_.addFile("/d/file", 1);
  fileSystem_.addFolder("/d/locked");
  fileSystem_.makeUnreadable("/d/locked");
  fileSystem_.addLink("/d/self", "self");
  fileSystem_.addLink("/d/dangling", "nowhere");
  fileSystem_.addLink("/d/toFile", "file");
  EXPECT_EQ(errorOf(""), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("d"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("/d/missing"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("/d/missing/.."), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("/d/dangling"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("/d/file"), std::errc::not_a_directory);
  EXPECT_EQ(errorOf("/d/file/.."), std::errc::not_a_directory);
  EXPECT_EQ(errorOf("/d/toFile"), std::errc::not_a_directory);
  EXPECT_EQ(errorOf("/d/self"), std::errc::too_many_symbolic_link_levels);
  EXPECT_EQ(errorOf("/d/locked"), std::errc::permission_denied);
  fileSystem_.makeReadable("/d/locked");
  EXPECT_EQ(errorOf("/d/locked"), std::error_code());
}

TEST_F(MemoryFileSystemTest, OpeningByPathFollowsLinks) {
  fileSystem_.addFile("/real/sub/file", 1);
  fileSystem_.addLink("/d/link", "../real");
  fileSystem_.addLink("/d/twice", "/d/link/sub");
  EXPECT_EQ(namesIn(*open("/d/link")), Strings{"sub"});
  EXPECT_EQ(namesIn(*open("/d/link/sub/")), Strings{"file"});
  EXPECT_EQ(namesIn(*open("/d/twice")), Strings{"file"});
  EXPECT_EQ(namesIn(*open("/d/twice/..")), Strings{"sub"});  // the parent of where the link leads
  EXPECT_EQ(namesIn(*open("//d/.//../real/./sub//")), Strings{"file"});
}

TEST_F(MemoryFileSystemTest, OpeningAChildFollowsNoLink) {
  fileSystem_.addFile("/d/folder/file", 1);
  fileSystem_.addLink("/d/link", "folder");
  fileSystem_.addFolder("/d/locked");
  fileSystem_.makeUnreadable("/d/locked");
  const auto folder = open("/d");
  EXPECT_EQ(namesIn(*folder->openChild("folder").value()), Strings{"file"});
  EXPECT_EQ(folder->openChild("link").error().code, std::errc::not_a_directory);
  EXPECT_EQ(folder->openChild("missing").error().code, std::errc::no_such_file_or_directory);
  EXPECT_EQ(folder->openChild("locked").error(), (SweepError{SweepAttempt::openFolder, FileUrl("/d/locked"),
                                                             std::make_error_code(std::errc::permission_denied), ""}));
}

TEST_F(MemoryFileSystemTest, ReadingFailsAfterSoManyEntries) {
  for (const char* path : {"/d/1", "/d/2", "/d/3", "/d/4", "/d/5"}) fileSystem_.addFile(path, 1);
  fileSystem_.failReadingAfter("/d", 4);
  const auto folder = open("/d");
  EntryBatch batch;
  ASSERT_TRUE(folder->readEntries(batch));
  ASSERT_TRUE(folder->readEntries(batch));
  EXPECT_EQ(batch.size(), 1u);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(folder->readEntries(batch).error().code, std::errc::io_error);
}

TEST_F(MemoryFileSystemTest, AttributesAreThoseOfTheEntryItself) {
  fileSystem_.addFile("/d/file", 10);
  fileSystem_.addLink("/d/link", "file");
  fileSystem_.addOther("/d/pipe");
  fileSystem_.addFolder("/d/doc");
  fileSystem_.markPackage("/d/doc");
  const auto folder = open("/d");
  EXPECT_EQ(folder->attributes("file")->countedBytes(), 10);
  EXPECT_EQ(folder->attributes("link")->kind, EntryKind::symbolicLink);
  EXPECT_EQ(folder->attributes("pipe")->kind, EntryKind::other);
  EXPECT_TRUE(folder->attributes("doc")->isPackage);
  EXPECT_EQ(folder->attributes("missing"), std::nullopt);
  EXPECT_EQ(fileSystem_.attributeReads(), (Strings{"/d/file", "/d/link", "/d/pipe", "/d/doc", "/d/missing"}));
}

TEST_F(MemoryFileSystemTest, LinksResolveToTheEnd) {
  fileSystem_.addFile("/real/sub/file", 10);
  fileSystem_.addLink("/alias", "real");
  fileSystem_.addLink("/d/relative", "../alias/sub");
  fileSystem_.addLink("/d/absolute", "/d/relative/./file");
  const auto folder = open("/d");
  EXPECT_EQ(folder->resolveLink("relative").url, FileUrl("/real/sub"));
  EXPECT_EQ(folder->resolveLink("relative").attributes->kind, EntryKind::folder);
  EXPECT_EQ(folder->resolveLink("absolute").url, FileUrl("/real/sub/file"));
  EXPECT_EQ(folder->resolveLink("absolute").attributes->countedBytes(), 10);
}

TEST_F(MemoryFileSystemTest, AnUnresolvedLinkYieldsItsOwnPath) {
  fileSystem_.addLink("/d/dangling", "nowhere");
  fileSystem_.addLink("/d/a", "b");
  fileSystem_.addLink("/d/b", "a");
  const auto folder = open("/d/./");
  for (const std::string name : {"dangling", "a", "b", "missing"}) {
    EXPECT_EQ(folder->resolveLink(name).url, FileUrl("/d/" + name));
    EXPECT_EQ(folder->resolveLink(name).attributes, std::nullopt);
  }
}

TEST_F(MemoryFileSystemTest, FortyLinksInAChainAreFollowedAndNoMore) {
  fileSystem_.addFile("/d/0", 10);
  for (int i = 1; i <= 41; ++i) fileSystem_.addLink("/d/" + std::to_string(i), std::to_string(i - 1));
  EXPECT_EQ(open("/d")->resolveLink("40").url, FileUrl("/d/0"));
  EXPECT_EQ(open("/d")->resolveLink("41").url, FileUrl("/d/41"));
}

TEST_F(MemoryFileSystemTest, ARemovedFolderThatIsHeldOpenIsEmpty) {
  fileSystem_.addFile("/d/sub/1", 1);
  fileSystem_.addFile("/d/after", 1);
  const auto parent = open("/d");
  const auto folder = open("/d/sub");
  fileSystem_.remove("/d/sub");
  EXPECT_EQ(namesIn(*folder), Strings());
  EXPECT_EQ(namesIn(*parent), Strings{"after"});
  EXPECT_EQ(errorOf("/d/sub"), std::errc::no_such_file_or_directory);
  fileSystem_.addFile("/d/sub/2", 1);
  EXPECT_EQ(namesIn(*open("/d/sub")), Strings{"2"});
}

TEST_F(MemoryFileSystemTest, AnEntryAddedAgainKeepsItsPlace) {
  for (const char* path : {"/d/1", "/d/2", "/d/3"}) fileSystem_.addFile(path, 1);
  fileSystem_.addFile("/d/1", 50);
  fileSystem_.addLink("/d/2", "3");
  EXPECT_EQ(namesIn(*open("/d")), (Strings{"1", "2", "3"}));
  EXPECT_EQ(open("/d")->attributes("1")->countedBytes(), 50);
  EXPECT_EQ(open("/d")->attributes("2")->kind, EntryKind::symbolicLink);
}

TEST_F(MemoryFileSystemTest, BuildingTheImpossibleThrows) {
  fileSystem_.addFile("/d/file", 1);
  EXPECT_THROW(fileSystem_.addFile("/d/file/below", 1), std::invalid_argument);
  EXPECT_THROW(fileSystem_.makeUnreadable("/d/file"), std::invalid_argument);
  EXPECT_THROW(fileSystem_.hideAttributes("/d/missing"), std::invalid_argument);
  EXPECT_THROW(fileSystem_.addFile("relative", 1), std::invalid_argument);
  EXPECT_THROW(fileSystem_.remove("/"), std::invalid_argument);
}

TEST_F(MemoryFileSystemTest, OpeningsAreRememberedAsTheyWereSpelled) {
  fileSystem_.addFile("/real/sub/file", 1);
  fileSystem_.addLink("/link", "real");
  const auto folder = open("/link/");
  (void)folder->openChild("sub").value()->openChild("missing");
  EXPECT_FALSE(fileSystem_.openFolder(FileUrl("/nowhere"), EntryDetail::kinds));
  EXPECT_EQ(fileSystem_.openedFolders(), (Strings{"/link", "/link/sub", "/link/sub/missing", "/nowhere"}));
}

TEST_F(MemoryFileSystemTest, HooksRunWithoutTheLock) {
  fileSystem_.addFile("/d/sub/file", 1);
  Strings calls;
  fileSystem_.onOpen([&](const std::string& path) {
    calls.push_back("open " + path);
    fileSystem_.addFile(path + "/late", 1);
  });
  fileSystem_.onRead([&](const std::string& path) { calls.push_back("read " + path); });
  EXPECT_EQ(namesIn(*open("/d")->openChild("sub").value()), (Strings{"file", "late"}));
  EXPECT_EQ(calls, (Strings{"open /d", "open /d/sub", "read /d/sub", "read /d/sub"}));
}

TEST_F(MemoryFileSystemTest, AVolumesValuesHoldForAllBelowIt) {
  VolumeValues root;
  root.totalBytes = 1;
  VolumeValues data;
  data.totalBytes = 2;
  fileSystem_.setVolumeValues("/", root);
  fileSystem_.setVolumeValues("/data", data);
  fileSystem_.setVolumeValues("/dead", std::nullopt);
  EXPECT_EQ(fileSystem_.volumeValues(FileUrl("/home/user"))->totalBytes, 1);
  EXPECT_EQ(fileSystem_.volumeValues(FileUrl("/data/x/"))->totalBytes, 2);
  EXPECT_FALSE(fileSystem_.volumeValues(FileUrl("/dead/x")));
  EXPECT_EQ(fileSystem_.measuredVolumes(), (Strings{"/home/user", "/data/x", "/dead/x"}));
}

TEST_F(MemoryFileSystemTest, TheClockStepsAfterEachLook) {
  fileSystem_.setClock(std::chrono::seconds(5));
  EXPECT_EQ(fileSystem_.now(), std::chrono::seconds(5));
  fileSystem_.setClockStep(std::chrono::milliseconds(350));
  EXPECT_EQ(fileSystem_.now(), std::chrono::seconds(5));
  EXPECT_EQ(fileSystem_.now(), std::chrono::milliseconds(5350));
  fileSystem_.advanceClock(std::chrono::seconds(1));
  EXPECT_EQ(fileSystem_.now(), std::chrono::milliseconds(6700));
}

TEST_F(MemoryFileSystemTest, AChainOfTwentyThousandFoldersCanBeWalked) {
  std::string path;
  for (int depth = 0; depth < 20'000; ++depth) path += "/d";
  fileSystem_.addFile(path + "/file", 1);
  auto folder = open("/");
  for (int depth = 0; depth < 20'000; ++depth) folder = folder->openChild("d").value();
  EXPECT_EQ(namesIn(*folder), Strings{"file"});
  EXPECT_EQ(namesIn(*open(path)), Strings{"file"});
  fileSystem_.remove("/d");
}

}  // namespace
}  // namespace dunmere::test
