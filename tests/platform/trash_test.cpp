// What arrives in the Trash, and what is recorded of it.
#include "platform/trash/trash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/trash_room.h"

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

TEST_F(TrashMove, ANameOf238BytesMoves) {
  const std::string name(238, 'n');
  makeFile(path(name), "long");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path(name)), 0);
    EXPECT_EQ(contentOf(files() + "/" + name), "long");
    EXPECT_EQ(recordValue(record(name), "Path"), path(name));
  });
}

TEST_F(TrashMove, AVolumeApartFromHomeHasATrashOfItsOwn) {
  makeFolder(path("volume"));
  inRoom([&] {
    enterPrivateMounts();
    mountNew(path("volume"), "ramfs");
    makeFolder(path("volume/folder"));
    makeFile(path("volume/folder/file"), "x");
    ASSERT_EQ(moveToTrash(path("volume/folder/file")), 0);
    EXPECT_THAT(namesIn(path("volume/folder")), IsEmpty());
    const std::string own = path("volume/.Trash-") + std::to_string(geteuid());
    EXPECT_EQ(contentOf(own + "/files/file"), "x");
    EXPECT_EQ(recordValue(contentOf(own + "/info/file.trashinfo"), "Path"), "folder/file");
    EXPECT_FALSE(isThere(trash()));
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
