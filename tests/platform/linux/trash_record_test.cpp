#include "platform/linux/trash_record.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

#include "tests/platform/linux/trash_room.h"

namespace dunmere::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kLongestName = 255;
constexpr std::size_t kSuffix = sizeof(".trashinfo") - 1;

class TrashRecordTest : public TrashRoom {
 protected:
  TrashRecordTest() {
    makeFolder(path("info"));
    trash_.info = UniqueDescriptor(::open(path("info").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  }

  TrashFolder trash_;
};

TEST_F(TrashRecordTest, KeptRecordStays) {
  {
    auto record = TrashRecord::write(trash_, "item", "text");
    ASSERT_TRUE(record.has_value());
    record->keep();
  }
  EXPECT_THAT(namesIn(path("info")), ElementsAre("item.trashinfo"));
  EXPECT_EQ(contentOf(path("info/item.trashinfo")), "text");
}

TEST_F(TrashRecordTest, RecordThatIsNotKeptGoes) {
  {
    const auto record = TrashRecord::write(trash_, "item", "text");
    EXPECT_THAT(namesIn(path("info")), ElementsAre("item.trashinfo"));
  }
  EXPECT_THAT(namesIn(path("info")), IsEmpty());
}

TEST_F(TrashRecordTest, TakenNameIsLeftAlone) {
  makeFile(path("info/item.trashinfo"), "of another item");
  const auto record = TrashRecord::write(trash_, "item", "text");
  ASSERT_FALSE(record.has_value());
  EXPECT_EQ(record.error().value(), EEXIST);
  EXPECT_EQ(contentOf(path("info/item.trashinfo")), "of another item");
}

TEST_F(TrashRecordTest, ALinkInItsPlaceIsNotFollowed) {
  makeLink(path("info/item.trashinfo"), path("target"));
  EXPECT_FALSE(TrashRecord::write(trash_, "item", "text").has_value());
  EXPECT_FALSE(isThere(path("target")));
}

TEST_F(TrashRecordTest, UnfinishedRecordGoes) {
  inRoom([&] {
    forbidWriting();
    const auto record = TrashRecord::write(trash_, "item", "text");
    ASSERT_FALSE(record.has_value());
    EXPECT_EQ(record.error().value(), EFBIG);
    EXPECT_THAT(namesIn(path("info")), IsEmpty());
  });
}

TEST(TrashRecordText, SaysPlaceAndLocalTime) {
  setenv("TZ", "UTC", 1);
  EXPECT_EQ(trashRecordText({}, "/home/me/a b", 1735689599),
            "[Trash Info]\nPath=/home/me/a%20b\nDeletionDate=2024-12-31T23:59:59\n");
}

TEST(TrashRecordText, OnAnotherVolumeThePlaceIsRelativeToItsTop) {
  TrashFolder trash;
  trash.top = "/media/disk";
  EXPECT_EQ(recordValue(trashRecordText(trash, "/media/disk/folder/item", 0), "Path"), "folder/item");
  trash.top = "/";
  EXPECT_EQ(recordValue(trashRecordText(trash, "/folder/item", 0), "Path"), "folder/item");
}

TEST(NameInTrash, IsTheItemsOwnThenNumbered) {
  EXPECT_EQ(nameInTrash("item", 1), "item");
  EXPECT_EQ(nameInTrash("item", 2), "item.2");
  EXPECT_EQ(nameInTrash("item", 10), "item.10");
}

TEST(NameInTrash, LeavesRoomForTheRecordsName) {
  const std::string longest(kLongestName, 'n');
  EXPECT_EQ(nameInTrash(longest, 1), std::string(kLongestName - kSuffix, 'n'));
  EXPECT_EQ(nameInTrash(longest, 12), std::string(kLongestName - kSuffix - 3, 'n') + ".12");
  const std::string fitting(kLongestName - kSuffix, 'n');
  EXPECT_EQ(nameInTrash(fitting, 1), fitting);
}

TEST(NameInTrash, CutsBetweenCharacters) {
  for (const std::string character : {"\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x92\xbe"}) {
    std::string name = "a";
    while (name.size() + character.size() <= kLongestName) name += character;
    const std::string cut = nameInTrash(name, 1);
    EXPECT_LE(cut.size(), kLongestName - kSuffix);
    EXPECT_GT(cut.size() + character.size(), kLongestName - kSuffix);
    EXPECT_EQ((cut.size() - 1) % character.size(), 0U);
  }
}

TEST(NameInTrash, CutsNamesOfAnyBytes) {
  EXPECT_GT(nameInTrash(std::string(kLongestName, '\x80'), 1).size(), 200U);
}

}  // namespace
}  // namespace dunmere::test
