// What lies in a Trash already, or is or holds the Trash, stays; what only looks like it does not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"

namespace dunmere::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TrashItself : public TrashRoom {
 protected:
  /// Makes a Trash with one item in it, a folder "big" with a file.
  static void makeTrash(const std::string& folder) {
    for (const char* below : {"", "/files", "/info", "/files/big"}) makeFolder(folder + below);
    makeFile(folder + "/files/big/file", "x");
    makeFile(folder + "/info/big.trashinfo", "[Trash Info]\nPath=/big\nDeletionDate=2024-12-31T23:59:59\n");
  }

  /// What lies in the Trash is refused, and the Trash is as makeTrash() made it.
  void expectKeepsItsItems(const std::string& folder) {
    EXPECT_EQ(moveToTrash(folder + "/files/big"), EALREADY);
    EXPECT_EQ(moveToTrash(folder + "/files/big/file"), EALREADY);
    EXPECT_EQ(moveToTrash(folder + "/info/big.trashinfo"), EALREADY);
    EXPECT_EQ(moveToTrash(folder + "/files"), EALREADY);
    EXPECT_EQ(moveToTrash(folder + "/info"), EALREADY);
    EXPECT_EQ(moveToTrash(folder), EDEADLK);
    EXPECT_THAT(namesIn(folder + "/files"), ElementsAre("big"));
    EXPECT_THAT(namesIn(folder + "/files/big"), ElementsAre("file"));
    EXPECT_THAT(namesOfRecords(folder), ElementsAre("big"));
  }
};

TEST_F(TrashItself, WhatLiesInTheHomesTrashStays) {
  makeFolder(dataHome());
  makeTrash(trash());
  inRoom([&] { expectKeepsItsItems(trash()); });
}

TEST_F(TrashItself, WhatLiesInTheTrashStaysWhateverTheTrashIsCalled) {
  makeFolder(dataHome());
  makeTrash(path("kept"));
  makeLink(trash(), path("kept"));
  inRoom([&] { expectKeepsItsItems(path("kept")); });
}

TEST_F(TrashItself, WhatLiesInAnotherUsersTrashStays) {
  for (const char* folder : {"other", "other/.local", "other/.local/share"}) makeFolder(path(folder));
  const std::string theirs = path("other/.local/share/Trash");
  makeTrash(theirs);
  inRoom([&] {
    expectKeepsItsItems(theirs);
    EXPECT_FALSE(isThere(trash()));
  });
}

TEST_F(TrashItself, WhatLiesInAVolumesTrashStays) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeTrash(volumeTrash("volume"));
    expectKeepsItsItems(volumeTrash("volume"));
    makeTrash(path("volume/.Trash-4321"));
    expectKeepsItsItems(path("volume/.Trash-4321"));
  });
}

TEST_F(TrashItself, WhatLiesInTheTrashThatAllUsersShareStays) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    const std::string shared = path("volume/.Trash");
    makeFolder(shared);
    ASSERT_EQ(chmod(shared.c_str(), 01777), 0);
    for (const std::string& user : {std::to_string(geteuid()), std::string("4321")}) {
      makeTrash(shared + "/" + user);
      EXPECT_EQ(moveToTrash(shared + "/" + user + "/files/big"), EALREADY);
      EXPECT_EQ(moveToTrash(shared + "/" + user), EALREADY);
      EXPECT_THAT(namesOfRecords(shared + "/" + user), ElementsAre("big"));
    }
    EXPECT_EQ(moveToTrash(shared), EDEADLK);
  });
}

TEST_F(TrashItself, AFolderThatHoldsItsTrashStays) {
  makeFolder(dataHome());
  makeTrash(trash());
  inRoom([&] {
    EXPECT_EQ(moveToTrash(dataHome()), EDEADLK);
    EXPECT_EQ(moveToTrash(home()), EDEADLK);
    EXPECT_THAT(namesIn(trash() + "/files"), ElementsAre("big"));
    EXPECT_THAT(namesOfRecords(trash()), ElementsAre("big"));
  });
}

TEST_F(TrashItself, AFolderWhereItsTrashWouldBeMadeStays) {
  inRoom([&] {
    EXPECT_EQ(moveToTrash(home()), EDEADLK);
    EXPECT_THAT(namesIn(trash() + "/files"), IsEmpty());
    EXPECT_THAT(namesIn(trash() + "/info"), IsEmpty());
  });
}

TEST_F(TrashItself, WhatIsOnlyCalledLikeATrashMoves) {
  // Not of a Trash's layout; of its layout, but not so called; a user's folder outside of the shared one.
  for (const char* folder : {"Trash", "Trash/files", ".Trash-4321", ".Trash", ".Trash/4321", "project", "4321"}) {
    makeFolder(path(folder));
  }
  for (const char* name : {".Trash-foo", "project/sub"}) makeTrash(path(name));
  makeTrash(path("4321/4321"));
  for (const char* item : {"Trash/files/item", "project/sub/files/item", ".Trash-foo/files/item", ".Trash/4321/item"}) {
    makeFile(path(item), "x");
  }
  inRoom([&] {
    for (const char* item :
         {"Trash/files/item", "Trash/files", "Trash", ".Trash-4321", ".Trash/4321/item", ".Trash/4321", ".Trash",
          "project/sub/files/item", "project/sub/files", "project", ".Trash-foo/files/item", ".Trash-foo", "4321"}) {
      EXPECT_EQ(moveToTrash(path(item)), 0) << item;
    }
  });
}

}  // namespace
}  // namespace dunmere::test
