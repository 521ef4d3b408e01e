// A folder that its owner could never empty once it lies in the Trash stays; any other moves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string>

#include "platform/linux/held_item.h"
#include "platform/linux/item_look.h"
#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"
#include "tests/support/slow_share.h"

namespace dunmere::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned kNobody = 65534;

class TrashDeletable : public TrashRoom {
 protected:
  void SetUp() override { DUNMERE_NEEDS(Feature::secondUser); }

  /// The user's folder "item", with another user's "theirs" of these rights deep in it.
  void makeItem(mode_t mode) const {
    ASSERT_EQ(chmod(home().c_str(), 0777), 0);
    ASSERT_EQ(chmod(path("").c_str(), 0777), 0);
    for (const char* folder : {"item", "item/a", "item/a/b"}) makeOwn(folder);
    makeFolder(path(kTheirs));
    ASSERT_EQ(chmod(path(kTheirs).c_str(), mode), 0);
  }
  void makeOwn(const std::string& folder) const {
    makeFolder(path(folder));
    giveToUser(folder);
  }
  void giveToUser(const std::string& name) const { ASSERT_EQ(chown(path(name).c_str(), kNobody, kNobody), 0); }
  void makeFileIn(const std::string& folder) const { makeFile(path(folder + "/file"), "x"); }

  void expectMoves() {
    becomeNobody();
    EXPECT_EQ(moveToTrash(path("item")), 0);
    EXPECT_THAT(namesIn(trash() + "/files"), ElementsAre("item"));
  }
  void expectStays() {
    becomeNobody();
    EXPECT_EQ(moveToTrash(path("item")), ENOTEMPTY);
    EXPECT_TRUE(isThere(path("item")));
    EXPECT_THAT(namesIn(trash() + "/files"), IsEmpty());
    EXPECT_THAT(namesIn(trash() + "/info"), IsEmpty());
  }

  static constexpr const char* kTheirs = "item/a/b/theirs";
};

TEST_F(TrashDeletable, AFolderOfOthersThatHoldsSomethingKeepsTheItem) {
  inRoom([&] {
    makeItem(0755);
    makeFileIn(kTheirs);
    expectStays();
    EXPECT_EQ(contentOf(path(kTheirs) + "/file"), "x");
  });
}

TEST_F(TrashDeletable, AnEmptyFolderOfOthersMoves) {
  inRoom([&] {
    makeItem(0755);
    expectMoves();
  });
}

TEST_F(TrashDeletable, AFileOfOthersInAnOwnFolderMoves) {
  inRoom([&] {
    makeItem(0755);
    makeFileIn("item/a/b");
    expectMoves();
  });
}

TEST_F(TrashDeletable, AFolderOfOthersThatAnybodyMayChangeMoves) {
  inRoom([&] {
    makeItem(0777);
    makeFileIn(kTheirs);
    expectMoves();
  });
}

TEST_F(TrashDeletable, AStickyFolderOfOthersWithWhatIsOwnMoves) {
  inRoom([&] {
    makeItem(01777);
    makeFileIn(kTheirs);
    giveToUser(std::string(kTheirs) + "/file");
    expectMoves();
  });
}

TEST_F(TrashDeletable, AStickyFolderOfOthersWithWhatIsTheirsKeepsTheItem) {
  inRoom([&] {
    makeItem(01777);
    makeFileIn(kTheirs);
    expectStays();
  });
}

TEST_F(TrashDeletable, AStickyFolderOfOnesOwnMovesWithWhatIsTheirs) {
  inRoom([&] {
    makeItem(01777);
    makeFileIn(kTheirs);
    giveToUser(kTheirs);
    expectMoves();
  });
}

TEST_F(TrashDeletable, AFolderOfOthersThatCannotBeReadKeepsTheItem) {
  inRoom([&] {
    makeItem(0700);
    makeFileIn(kTheirs);
    expectStays();
  });
}

TEST_F(TrashDeletable, AFolderOfOthersBelowOneThatAnybodyMayChangeKeepsTheItem) {
  inRoom([&] {
    makeItem(0777);
    makeFolder(path(kTheirs) + "/inner");
    makeFileIn(std::string(kTheirs) + "/inner");
    expectStays();
  });
}

TEST_F(TrashDeletable, AnOwnFolderMovesWhateverItsRightsSinceItsOwnerMayChangeThem) {
  for (const mode_t mode : {0555, 0300, 0000}) {
    inRoom([&] {
      makeItem(mode);
      makeFileIn(kTheirs);
      giveToUser(kTheirs);
      expectMoves();
    });
    removeTree(path("item"));
    removeTree(trash());
  }
}

TEST_F(TrashDeletable, ALinkToAFolderOfOthersMoves) {
  makeFolder(path("elsewhere"));
  makeFileIn("elsewhere");
  inRoom([&] {
    makeItem(0755);
    makeLink(path("item/a/link"), path("elsewhere"));
    expectMoves();
  });
}

TEST_F(TrashDeletable, TheAdministratorMayDeleteWhatIsOthers) {
  inRoom([&] {
    makeItem(01700);
    makeFileIn(kTheirs);
    giveToUser(kTheirs);
    EXPECT_EQ(moveToTrash(path("item")), 0);
  });
}

TEST_F(TrashDeletable, AFolderOfOthersIsFoundHoweverDeepItLies) {
  inRoom([&] {
    // Deeper than the process may hold folders open, at a path longer than the system's limit.
    const rlimit few{40, 40};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    makeItem(0755);
    const std::string name(100, 'd');
    ASSERT_EQ(chdir(path("item").c_str()), 0);
    for (int depth = 0; depth < 100; ++depth) {
      for (const std::string& folder : {name, std::string("beside")}) {
        makeFolder(folder);
        ASSERT_EQ(chown(folder.c_str(), kNobody, kNobody), 0);
      }
      ASSERT_EQ(chdir(name.c_str()), 0);
    }
    makeFolder("theirs");
    makeFile("theirs/file", "x");
    expectStays();
  });
}

TEST_F(TrashDeletable, AmongManyFoldersTheOneOfOthersIsFound) {
  inRoom([&] {
    makeItem(0755);
    const std::string name(200, 'n');  // so that one read does not give all of them
    for (int number = 0; number < 1000; ++number) makeOwn("item/a/" + name + std::to_string(number));
    makeFileIn(kTheirs);
    expectStays();
  });
}

TEST_F(TrashDeletable, NoFileIsAskedForWhereOnlyRightsMatter) {
  DUNMERE_NEEDS(Feature::fuse);
  constexpr std::size_t kFiles = 300;
  for (const char* folder : {"disk", "disk/item", "share"}) makeFolder(path(folder));
  for (std::size_t number = 0; number < kFiles; ++number) makeFile(path("disk/item/") + std::to_string(number), "x");
  inRoom([&] {
    enterPrivateMounts();
    const SlowShare share(path("disk"), path("share"), path("node"), {});
    const auto held = holdItem(FileUrl(path("share/item")));
    ASSERT_TRUE(held);
    const auto questionsFor = [&](LookDetail detail) {
      const std::size_t before = share.questions();
      EXPECT_TRUE(lookThrough(*held, detail));
      return share.questions() - before;
    };
    EXPECT_LT(questionsFor(LookDetail::rights), kFiles / 10);
    EXPECT_GE(questionsFor(LookDetail::space), kFiles);
  });
}

class TrashOfSnapshot : public TrashRoom {};

TEST_F(TrashOfSnapshot, ThatIsReadOnlyKeepsTheItem) {
  DUNMERE_NEEDS(Feature::btrfs);
  inRoom([&] {
    enterPrivateMounts();
    makeFile(path("image"), "");
    ASSERT_EQ(truncate(path("image").c_str(), 128 << 20), 0);
    makeFolder(path("disk"));
    mountBtrfs(path("image"), path("disk"));
    makeSubvolume(path("disk/data"));
    makeFile(path("disk/data/file"), "x");
    makeFolder(path("disk/item"));
    makeSnapshot(path("disk/data"), path("disk/item/snapshot"));
    EXPECT_EQ(moveToTrash(path("disk/item")), ENOTEMPTY);
    EXPECT_EQ(contentOf(path("disk/item/snapshot/file")), "x");
  });
}

}  // namespace
}  // namespace dunmere::test
