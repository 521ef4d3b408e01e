#include "platform/posix/paths.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace dunmere {
namespace {

struct Mount {
  std::string mountPoint;
  int number = 0;
};

bool isMountAtOrBelowIn(const std::vector<Mount>& mounts, std::string_view path) {
  return isMountAtOrBelow(mounts, path);
}

TEST(MountPaths, HolderIsTheNearestMountAbove) {
  const std::vector<Mount> mounts = {{"/"}, {"/home"}, {"/mnt/a"}, {"/mnt/a/inner"}};
  const auto holder = [&](std::string_view path) { return mountHolding(mounts, path)->mountPoint; };
  EXPECT_EQ(holder("/"), "/");
  EXPECT_EQ(holder("/etc"), "/");
  EXPECT_EQ(holder("/mnt/a"), "/mnt/a");
  EXPECT_EQ(holder("/mnt/a/b/c"), "/mnt/a");
  EXPECT_EQ(holder("/mnt/ab"), "/");
  EXPECT_EQ(holder("/mnt/a/inner/d"), "/mnt/a/inner");
  EXPECT_EQ(mountHolding(std::vector<Mount>{}, "/etc"), nullptr);
}

TEST(MountPaths, OfTwoMountsAtOneFolderTheLaterLiesOnTop) {
  const std::vector<Mount> mounts = {{"/mnt", 1}, {"/mnt", 2}};
  EXPECT_EQ(mountHolding(mounts, "/mnt/a")->number, 2);
}

TEST(MountPaths, AMountAtAPathOrDeepBelowItCounts) {
  EXPECT_TRUE(isMountAtOrBelowIn({{"/"}, {"/mnt/usb"}}, "/mnt/usb"));
  EXPECT_TRUE(isMountAtOrBelowIn({{"/"}, {"/mnt/usb/a/b"}}, "/mnt"));
  EXPECT_TRUE(isMountAtOrBelowIn({{"/"}}, "/"));
}

TEST(MountPaths, AMountAboveOrBesideAPathDoesNotCount) {
  EXPECT_FALSE(isMountAtOrBelowIn({{"/"}, {"/mnt"}}, "/mnt/usb"));
  EXPECT_FALSE(isMountAtOrBelowIn({{"/"}, {"/mnt/usb2"}}, "/mnt/usb"));
  EXPECT_FALSE(isMountAtOrBelowIn({{"/"}, {"/mnt/us"}}, "/mnt/usb"));
}

TEST(FileUri, UnreservedCharactersAndSlashesStandForThemselves) {
  EXPECT_EQ(fileUri("/aZ/09-._~"), "file:///aZ/09-._~");
  EXPECT_EQ(fileUri("/"), "file:///");
}

TEST(FileUri, EveryOtherByteIsPercentEncoded) {
  EXPECT_EQ(fileUri("/tmp/a b\xff"), "file:///tmp/a%20b%FF");
  EXPECT_EQ(fileUri("/100%"), "file:///100%25");
  EXPECT_EQ(fileUri("/a#b?c&d=e+f;g:h@i!$'()*,[]"),
            "file:///a%23b%3Fc%26d%3De%2Bf%3Bg%3Ah%40i%21%24%27%28%29%2A%2C%5B%5D");
  EXPECT_EQ(fileUri("/\n\x01\x7f\\\""), "file:///%0A%01%7F%5C%22");
  EXPECT_EQ(fileUri("/\xc3\xa9"), "file:///%C3%A9");
}

TEST(FileUri, AllBytesComeOutAsPlainAscii) {
  std::string path = "/";
  for (int byte = 1; byte < 256; ++byte) path += static_cast<char>(byte);
  for (const char byte : fileUri(path)) EXPECT_TRUE(byte > 0x20 && byte < 0x7f) << static_cast<int>(byte);
}

}  // namespace
}  // namespace dunmere
