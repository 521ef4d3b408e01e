// What arrives in the Trash, and what is recorded of it.
#include "platform/trash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"

namespace dunmere::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class TrashMove : public TrashRoom {
 protected:
  std::string files() const { return trash() + "/files"; }
  std::string record(const std::string& name) const { return contentOf(trash() + "/info/" + name + ".trashinfo"); }
};

TEST_F(TrashMove, AFileMovesWithItsContent) {
  makeFile(path("report.txt"), "what was in it");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("report.txt")), 0);
    EXPECT_FALSE(isThere(path("report.txt")));
    EXPECT_THAT(namesIn(files()), ElementsAre("report.txt"));
    EXPECT_EQ(contentOf(files() + "/report.txt"), "what was in it");
  });
}

TEST_F(TrashMove, TheRecordNamesThePlaceAndTheDate) {
  makeFile(path("report.txt"), "x");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("report.txt")), 0);
    EXPECT_TRUE(record("report.txt").starts_with("[Trash Info]\n"));
    EXPECT_EQ(recordValue(record("report.txt"), "Path"), path("report.txt"));
    EXPECT_THAT(recordValue(record("report.txt"), "DeletionDate"),
                MatchesRegex("[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+"));
  });
}

TEST_F(TrashMove, AFolderMovesWhole) {
  makeFolder(path("folder"));
  makeFolder(path("folder/inner"));
  makeFile(path("folder/inner/deep"), "deep content");
  makeFile(path("folder/flat"), "flat content");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("folder")), 0);
    EXPECT_FALSE(isThere(path("folder")));
    EXPECT_THAT(namesIn(files() + "/folder"), ElementsAre("flat", "inner"));
    EXPECT_EQ(contentOf(files() + "/folder/inner/deep"), "deep content");
    EXPECT_EQ(contentOf(files() + "/folder/flat"), "flat content");
  });
}

TEST_F(TrashMove, ALinkMovesAndItsTargetStays) {
  makeFolder(path("target"));
  makeFile(path("target/inside"), "kept");
  makeLink(path("link"), "target");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("link")), 0);
    EXPECT_FALSE(isThere(path("link")));
    EXPECT_EQ(linkTargetOf(files() + "/link"), "target");
    EXPECT_EQ(contentOf(path("target/inside")), "kept");
  });
}

TEST_F(TrashMove, ATrailingSlashDoesNotMakeALinkItsTarget) {
  makeFolder(path("target"));
  makeLink(path("link"), "target");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("link/")), 0);
    EXPECT_THAT(namesIn(files()), ElementsAre("link"));
    EXPECT_TRUE(isThere(path("target")));
  });
}

TEST_F(TrashMove, ALinkThatLeadsNowhereMoves) {
  makeLink(path("broken"), "nowhere");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("broken")), 0);
    EXPECT_FALSE(isThere(path("broken")));
    EXPECT_EQ(linkTargetOf(files() + "/broken"), "nowhere");
  });
}

TEST_F(TrashMove, LinksInTheFoldersAboveAreFollowedAndThePhysicalPlaceIsRecorded) {
  makeFolder(path("real"));
  makeFile(path("real/file"), "x");
  makeLink(path("detour"), "real");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("detour/file")), 0);
    EXPECT_FALSE(isThere(path("real/file")));
    EXPECT_EQ(recordValue(record("file"), "Path"), path("real/file"));
  });
}

TEST_F(TrashMove, DotDotAboveTheItemMeansWhatTheSystemMeans) {
  makeFolder(path("real"));
  makeFolder(path("real/inner"));
  makeFile(path("real/file"), "right");
  makeFile(path("file"), "wrong");
  makeLink(path("detour"), "real/inner");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("detour/../file")), 0);
    EXPECT_EQ(contentOf(files() + "/file"), "right");
    EXPECT_EQ(contentOf(path("file")), "wrong");
  });
}

TEST_F(TrashMove, TwoItemsOfOneNameAreBothKept) {
  makeFolder(path("a"));
  makeFolder(path("b"));
  makeFile(path("a/same"), "first");
  makeFile(path("b/same"), "second");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("a/same")), 0);
    ASSERT_EQ(moveToTrash(path("b/same")), 0);
    const std::vector<std::string> names = namesIn(files());
    ASSERT_EQ(names.size(), 2U);
    std::vector<std::string> contents;
    for (const std::string& name : names) {
      contents.push_back(contentOf(files() + "/" + name));
      EXPECT_EQ(recordValue(record(name), "Path"), contents.back() == "first" ? path("a/same") : path("b/same"));
    }
    EXPECT_THAT(contents, testing::UnorderedElementsAre("first", "second"));
  });
}

TEST_F(TrashMove, ANameOfAnyLengthMovesAndIsRecordedWhole) {
  inRoom([&] {
    for (const std::size_t length : {238U, 239U, 245U, 246U, 255U}) {
      const std::string name(length, 'n');
      makeFile(path(name), "long");
      ASSERT_EQ(moveToTrash(path(name)), 0) << length;
      EXPECT_FALSE(isThere(path(name)));
      const std::string cut = name.substr(0, 245);  // leaves room for ".trashinfo"
      EXPECT_EQ(contentOf(files() + "/" + cut), "long") << length;
      EXPECT_EQ(recordValue(record(cut), "Path"), path(name));
      removeTree(trash());
    }
  });
}

TEST_F(TrashMove, WhatIsInTheTrashWithoutARecordIsNotReplaced) {
  makeFolder(dataHome());
  makeFolder(trash());
  makeFolder(files());
  makeFile(files() + "/same", "older");
  makeFile(path("same"), "newer");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("same")), 0);
    EXPECT_EQ(contentOf(files() + "/same"), "older");
    EXPECT_EQ(contentOf(files() + "/same.2"), "newer");
    EXPECT_THAT(namesOfRecords(trash()), ElementsAre("same.2"));
  });
}

TEST_F(TrashMove, AVolumeApartFromHomeHasATrashOfItsOwn) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeFolder(path("volume/folder"));
    makeFile(path("volume/folder/file"), "x");
    ASSERT_EQ(moveToTrash(path("volume/folder/file")), 0);
    EXPECT_THAT(namesIn(path("volume/folder")), IsEmpty());
    const std::string own = volumeTrash("volume");
    EXPECT_EQ(contentOf(own + "/files/file"), "x");
    EXPECT_EQ(recordValue(contentOf(own + "/info/file.trashinfo"), "Path"), "folder/file");
    EXPECT_FALSE(isThere(trash()));
  });
}

TEST_F(TrashMove, ASharedTrashOfAVolumeGetsAFolderForTheUser) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeFile(path("volume/file"), "x");
    makeFolder(path("volume/.Trash"));
    ASSERT_EQ(chmod(path("volume/.Trash").c_str(), 01777), 0);
    ASSERT_EQ(moveToTrash(path("volume/file")), 0);
    EXPECT_EQ(contentOf(path("volume/.Trash/") + std::to_string(geteuid()) + "/files/file"), "x");
    EXPECT_FALSE(isThere(volumeTrash("volume")));
  });
}

TEST_F(TrashMove, ASharedTrashThatIsUnsafeIsPassedBy) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeFolder(path("volume/elsewhere"));
    ASSERT_EQ(chmod(path("volume/elsewhere").c_str(), 01777), 0);
    // A link, and a folder from which anybody may take.
    makeLink(path("volume/.Trash"), "elsewhere");
    makeFile(path("volume/one"), "x");
    ASSERT_EQ(moveToTrash(path("volume/one")), 0);
    ASSERT_EQ(unlink(path("volume/.Trash").c_str()), 0);
    makeFolder(path("volume/.Trash"));
    makeFile(path("volume/two"), "y");
    ASSERT_EQ(moveToTrash(path("volume/two")), 0);
    EXPECT_THAT(namesIn(volumeTrash("volume") + "/files"), ElementsAre("one", "two"));
    EXPECT_THAT(namesIn(path("volume/elsewhere")), IsEmpty());
    EXPECT_THAT(namesIn(path("volume/.Trash")), IsEmpty());
  });
}

TEST_F(TrashMove, AFolderShownAgainElsewhereIsAVolumeOfItsOwn) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    // The same device as the home's: only the mount tells that nothing can be renamed across.
    enterPrivateMounts();
    mountVolume(path("volume"));
    for (const char* folder : {"volume/shown", "here"}) makeFolder(path(folder));
    setenv("XDG_DATA_HOME", path("volume/data").c_str(), 1);
    mountAgain(path("volume/shown"), path("here"));
    makeFile(path("here/file"), "x");
    ASSERT_EQ(moveToTrash(path("here/file")), 0);
    EXPECT_EQ(contentOf(volumeTrash("here") + "/files/file"), "x");
    EXPECT_FALSE(isThere(path("volume/data")));
  });
}

TEST_F(TrashMove, ATrashThatTheUserKeepsElsewhereOnTheVolumeIsUsed) {
  makeFolder(dataHome());
  makeFolder(path("kept"));
  makeLink(trash(), path("kept"));
  makeFile(path("file"), "x");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("file")), 0);
    EXPECT_EQ(contentOf(path("kept/files/file")), "x");
  });
}

TEST_F(TrashMove, AMissingTrashIsMadeForItsUserAlone) {
  makeFile(path("file"), "x");
  inRoom([&] {
    umask(0);
    ASSERT_EQ(moveToTrash(path("file")), 0);
    for (const std::string& folder : {dataHome(), trash(), files(), trash() + "/info"}) {
      struct stat status{};
      ASSERT_EQ(stat(folder.c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 0777, 0700U) << folder;
    }
  });
}

class TrashMoveOfName : public TrashMove, public testing::WithParamInterface<std::string> {};

TEST_P(TrashMoveOfName, MovesThatItemAndRecordsItsExactBytes) {
  const std::string name = GetParam();
  makeFile(path(name), "the right one");
  makeFile(path("\xef\xbf\xbd"), "looks alike");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path(name)), 0);
    EXPECT_FALSE(isThere(path(name)));
    EXPECT_THAT(namesIn(files()), ElementsAre(name));
    EXPECT_EQ(contentOf(files() + "/" + name), "the right one");
    const std::string origin = recordValue(record(name), "Path");
    EXPECT_EQ(percentDecoded(origin), path(name));
    EXPECT_THAT(origin, MatchesRegex("[]/%a-zA-Z0-9._~!$&'()*+,;=:@[-]+"));  // no raw control or high byte
    EXPECT_EQ(contentOf(path("\xef\xbf\xbd")), "looks alike");
  });
}

INSTANTIATE_TEST_SUITE_P(HostileNames, TrashMoveOfName,
                         testing::Values("two\nlines", "forged\nPath=passwd", "\xff\xfe not UTF-8 \x80", "\xff",
                                         "\"double\" 'single' `back`", "100%", "%41", "-rf", " ", "~", "back\\slash",
                                         "a#b?c", ".hidden", "...", "\xc3\xa9", "\x01\x7f", "name.trashinfo"),
                         [](const auto& parameter) { return "Name" + std::to_string(parameter.index); });

}  // namespace
}  // namespace dunmere::test
