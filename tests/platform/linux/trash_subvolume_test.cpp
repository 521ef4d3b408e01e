// The subvolumes of a btrfs share one mount, and only at its top does a desktop look for a Trash.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"

namespace dunmere::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class TrashOfSubvolume : public TrashRoom {
 protected:
  /// A btrfs at "disk" with the subvolume "disk/nested", which is no mount point, and the item "disk/nested/deep/item".
  void makeDisk() const {
    enterPrivateMounts();
    makeFile(path("image"), "");
    ASSERT_EQ(truncate(path("image").c_str(), 128 << 20), 0);
    makeFolder(path("disk"));
    mountBtrfs(path("image"), path("disk"));
    makeSubvolume(path("disk/nested"));
    makeFolder(path("disk/nested/deep"));
    makeFile(path("disk/nested/deep/item"), "x");
  }
};

TEST_F(TrashOfSubvolume, ThatIsNoMountPointHasNone) {
  DUNMERE_NEEDS(Feature::btrfs);
  inRoom([&] {
    makeDisk();
    EXPECT_EQ(moveToTrash(path("disk/nested/deep/item")), ENOTSUP);
    EXPECT_EQ(volumeName, "nested");
    EXPECT_EQ(contentOf(path("disk/nested/deep/item")), "x");
    EXPECT_THAT(namesIn(path("disk/nested")), ElementsAre("deep"));
    EXPECT_THAT(namesIn(path("disk")), ElementsAre("nested"));
  });
}

TEST_F(TrashOfSubvolume, ThatIsAMountPointIsAtItsTop) {
  DUNMERE_NEEDS(Feature::btrfs);
  inRoom([&] {
    makeDisk();
    makeFolder(path("mounted"));
    mountAgain(path("disk/nested"), path("mounted"));
    EXPECT_EQ(moveToTrash(path("mounted/deep/item")), 0);
    EXPECT_THAT(namesIn(volumeTrash("mounted") + "/files"), ElementsAre("item"));
  });
}

TEST_F(TrashOfSubvolume, ThatIsMovedItselfIsTheOneOfItsFolder) {
  DUNMERE_NEEDS(Feature::btrfs);
  inRoom([&] {
    makeDisk();
    EXPECT_EQ(moveToTrash(path("disk/nested")), 0);
    EXPECT_EQ(contentOf(volumeTrash("disk") + "/files/nested/deep/item"), "x");
    EXPECT_THAT(namesIn(path("disk")), Not(Contains("nested")));
  });
}

TEST_F(TrashOfSubvolume, ThatHoldsTheHomeIsTheHomes) {
  DUNMERE_NEEDS(Feature::btrfs);
  inRoom([&] {
    makeDisk();
    setenv("XDG_DATA_HOME", path("disk/nested/data").c_str(), 1);
    EXPECT_EQ(moveToTrash(path("disk/nested/deep/item")), 0);
    EXPECT_THAT(namesIn(path("disk/nested/data/Trash/files")), ElementsAre("item"));
  });
}

}  // namespace
}  // namespace dunmere::test
