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

}  // namespace
}  // namespace dunmere::test
