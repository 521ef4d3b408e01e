#include "platform/trash/mount_points.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dunmere {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(MountPoints, TheFifthFieldOfEachLineIsTheMountPoint) {
  EXPECT_THAT(parseMountPoints("22 1 254:0 / / rw,relatime shared:1 - ext4 /dev/vda rw\n"
                               "23 22 0:21 /sub /mnt/usb rw master:2 propagate_from:1 - tmpfs none rw\n"),
              ElementsAre("/", "/mnt/usb"));
}

TEST(MountPoints, ALastLineWithoutNewlineCounts) {
  EXPECT_THAT(parseMountPoints("22 1 254:0 / /a rw - ext4 /dev/vda rw"), ElementsAre("/a"));
}

TEST(MountPoints, OctalEscapesAreUndone) {
  EXPECT_THAT(parseMountPoints("1 1 0:1 / /a\\040b\\011c\\012d\\134e rw - ext4 x rw\n"), ElementsAre("/a b\tc\nd\\e"));
}

TEST(MountPoints, OtherBytesStayAsTheyAre) {
  EXPECT_THAT(parseMountPoints("1 1 0:1 / /\xff\xe4\\04x\\9 rw - ext4 x rw\n"), ElementsAre("/\xff\xe4\\04x\\9"));
}

TEST(MountPoints, LinesWithoutAFifthFieldAreNone) {
  EXPECT_THAT(parseMountPoints(""), IsEmpty());
  EXPECT_THAT(parseMountPoints("\n1 2 3 4\n\n"), IsEmpty());
}

TEST(MountPoints, AMountAtTheItemCounts) {
  EXPECT_TRUE(isMountAtOrBelow({"/", "/mnt/usb"}, "/mnt/usb"));
}

TEST(MountPoints, AMountDeepBelowTheItemCounts) {
  EXPECT_TRUE(isMountAtOrBelow({"/", "/mnt/usb/a/b"}, "/mnt"));
}

TEST(MountPoints, AMountAboveOrBesideTheItemDoesNotCount) {
  EXPECT_FALSE(isMountAtOrBelow({"/", "/mnt"}, "/mnt/usb"));
  EXPECT_FALSE(isMountAtOrBelow({"/", "/mnt/usb2"}, "/mnt/usb"));
  EXPECT_FALSE(isMountAtOrBelow({"/", "/mnt/us"}, "/mnt/usb"));
}

TEST(MountPoints, EveryMountLiesAtOrBelowTheRootFolder) {
  EXPECT_TRUE(isMountAtOrBelow({"/"}, "/"));
}

TEST(MountPoints, TheNearestMountAboveHoldsAPath) {
  const std::vector<std::string> mountPoints{"/", "/mnt/usb", "/mnt", "/mnt/us"};
  EXPECT_EQ(mountPointHolding(mountPoints, "/mnt/usb/a"), "/mnt/usb");
  EXPECT_EQ(mountPointHolding(mountPoints, "/mnt/usb"), "/mnt/usb");
  EXPECT_EQ(mountPointHolding(mountPoints, "/mnt/usb2/a"), "/mnt");
  EXPECT_EQ(mountPointHolding(mountPoints, "/home/a"), "/");
  EXPECT_EQ(mountPointHolding({}, "/home/a"), "/");
}

TEST(MountPoints, TheRunningSystemHasTheRootFolderAndProc) {
  const auto mountPoints = readMountPoints();
  ASSERT_TRUE(mountPoints.has_value());
  EXPECT_THAT(*mountPoints, Contains("/"));
  EXPECT_THAT(*mountPoints, Contains("/proc"));
}

}  // namespace
}  // namespace dunmere
