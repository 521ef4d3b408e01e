#include "platform/trash/trashed_item.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/platform/trash_room.h"

namespace dunmere::test {
namespace {

/// An item that some Trash has already taken, played by hand.
class TrashedItemTest : public TrashRoom {
 protected:
  TrashedItemTest() {
    makeFolder(path("Trash"));
    makeFolder(path("Trash/files"));
    makeFolder(path("Trash/info"));
    makeFile(path("item"), "content");
  }

  LocatedItem locate() const {
    auto located = locateItem(FileUrl(path("item")));
    EXPECT_TRUE(located.has_value());
    return std::move(*located);
  }
  void moveAside() const { ASSERT_EQ(std::rename(path("item").c_str(), inTrash().c_str()), 0); }
  std::string inTrash() const { return path("Trash/files/item.2"); }
  std::string record() const { return path("Trash/info/item.2.trashinfo"); }
};

TEST_F(TrashedItemTest, IsFoundUnderTheNameThatTheTrashGaveIt) {
  const LocatedItem located = locate();
  moveAside();
  const auto trashed = findInTrash(located);
  ASSERT_TRUE(trashed.has_value());
  EXPECT_EQ(trashed->path, inTrash());
  EXPECT_EQ(trashed->infoPath, record());
}

TEST_F(TrashedItemTest, IsNotFoundOutsideATrash) {
  const LocatedItem located = locate();
  EXPECT_FALSE(findInTrash(located).has_value());
}

TEST_F(TrashedItemTest, IsNotFoundOnceTheTrashWasEmptied) {
  const LocatedItem located = locate();
  moveAside();
  ASSERT_EQ(std::remove(inTrash().c_str()), 0);
  EXPECT_FALSE(findInTrash(located).has_value());
}

TEST_F(TrashedItemTest, OnlyAWholeRecordIsARecord) {
  const TrashedItem trashed{inTrash(), record()};
  EXPECT_FALSE(isOriginRecorded(trashed));
  const std::string whole = "[Trash Info]\nPath=/a\nDeletionDate=2020-01-01T00:00:00\n";
  makeFile(record(), whole);
  EXPECT_TRUE(isOriginRecorded(trashed));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    makeFile(record(), whole.substr(0, length));
    EXPECT_FALSE(isOriginRecorded(trashed)) << "cut after " << length << " bytes";
  }
}

TEST_F(TrashedItemTest, GoesBackToItsPlaceAndItsRecordGoes) {
  const LocatedItem located = locate();
  moveAside();
  makeFile(record(), "");
  EXPECT_TRUE(putBack({inTrash(), record()}, located));
  EXPECT_EQ(contentOf(path("item")), "content");
  EXPECT_FALSE(isThere(inTrash()));
  EXPECT_FALSE(isThere(record()));
}

TEST_F(TrashedItemTest, StaysInTheTrashWhenItsPlaceWasTaken) {
  const LocatedItem located = locate();
  moveAside();
  makeFile(record(), "");
  makeFile(path("item"), "somebody else's");
  EXPECT_FALSE(putBack({inTrash(), record()}, located));
  EXPECT_EQ(contentOf(path("item")), "somebody else's");
  EXPECT_EQ(contentOf(inTrash()), "content");
  EXPECT_TRUE(isThere(record()));
}

TEST_F(TrashedItemTest, AnItemIsAtItsPlaceUntilItIsMovedOrReplaced) {
  const LocatedItem located = locate();
  EXPECT_EQ(isAtItsPlace(located), true);
  moveAside();
  EXPECT_EQ(isAtItsPlace(located), false);
  makeFile(path("item"), "somebody else's");
  EXPECT_EQ(isAtItsPlace(located), false);
}

}  // namespace
}  // namespace dunmere::test
