// Labels of file systems.
#include "platform/linux/volume_label.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/support/machine.h"
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

/// Paths of two of the machine's block devices with different numbers; fewer where it has no two.
std::vector<std::string> twoDevicesOfTheMachine() {
  std::map<dev_t, std::string> devices;
  for (const auto& entry : std::filesystem::directory_iterator("/dev")) {
    struct stat status{};
    const std::string path = entry.path().native();
    if (::stat(path.c_str(), &status) == 0 && S_ISBLK(status.st_mode)) devices.emplace(status.st_rdev, path);
  }
  std::vector<std::string> paths;
  for (const auto& [number, path] : devices) {
    if (paths.size() < 2) paths.push_back(path);
  }
  return paths;
}

/// Makes "device" and "other", which can be compared but not read: numbers that no driver has, or, since making one
/// takes root, devices of the machine that this user may not read.
void addTwoDevices(const TemporaryTree& tree) {
  if (::geteuid() == 0) {
    ASSERT_EQ(::mknod(tree.path("device").c_str(), S_IFBLK | 0600, makedev(60, 7)), 0);
    ASSERT_EQ(::mknod(tree.path("other").c_str(), S_IFBLK | 0600, makedev(60, 8)), 0);
    return;
  }
  const std::vector<std::string> devices = twoDevicesOfTheMachine();
  ASSERT_EQ(devices.size(), 2U);
  tree.link("device", devices[0]);
  tree.link("other", devices[1]);
}

TEST(VolumeLabel, LinkToTheDeviceNamesIt) {
  if (::geteuid() == 0 || twoDevicesOfTheMachine().size() < 2) DUNMERE_NEEDS(Feature::blockDeviceFiles);
  const TemporaryTree tree("/dev/shm");
  ASSERT_NO_FATAL_FAILURE(addTwoDevices(tree));
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
