// Labels of file systems.
#include "platform/linux/volume_label.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

TEST(VolumeLabel, EscapesOfLinkNamesAreUndone) {
  EXPECT_EQ(decodedLabel("Photos"), "Photos");
  EXPECT_EQ(decodedLabel("My\\x20Disk\\x2f1"), "My Disk/1");
  EXPECT_EQ(decodedLabel("caf\xc3\xa9"), "caf\xc3\xa9");
  EXPECT_EQ(decodedLabel("\\xff\\x"), "\xff\\x");
  EXPECT_EQ(decodedLabel("\\x2"), "\\x2");
  EXPECT_EQ(decodedLabel("\\xzz"), "\\xzz");
  EXPECT_EQ(decodedLabel("\\x2z"), "\\x2z");
  EXPECT_EQ(decodedLabel(""), "");
}

TEST(VolumeLabel, OnlyBlockDevicesHaveLabels) {
  EXPECT_EQ(labelOfDevice("none"), std::nullopt);
  EXPECT_EQ(labelOfDevice("nas.local:/export"), std::nullopt);
  EXPECT_EQ(labelOfDevice("/dev/null"), std::nullopt);
  EXPECT_EQ(labelOfDevice("/dev/nonexistent"), std::nullopt);
}

TEST(VolumeLabel, LinkToTheDeviceNamesIt) {
  // Numbers that no driver has: the device cannot be read, only compared. Making one takes root.
  const TemporaryTree tree("/dev/shm");
  ASSERT_EQ(::mknod(tree.path("device").c_str(), S_IFBLK | 0600, makedev(60, 7)), 0);
  ASSERT_EQ(::mknod(tree.path("other").c_str(), S_IFBLK | 0600, makedev(60, 8)), 0);
  tree.link("alias", "device");
  tree.folder("by-label");
  const auto label = [&tree](std::string_view device) {
    return labelOfDevice(tree.path(device), tree.path("by-label"));
  };
  tree.link("by-label/dangling", "../nowhere");
  EXPECT_EQ(label("device"), std::nullopt);
  tree.link("by-label/My\\x20Disk", "../device");
  EXPECT_EQ(label("device"), "My Disk");
  EXPECT_EQ(label("alias"), "My Disk");
  EXPECT_EQ(label("other"), std::nullopt);
}

}  // namespace
}  // namespace dunmere::test
