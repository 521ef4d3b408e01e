#include "platform/desktop/file_uri.h"

#include <gtest/gtest.h>

namespace dunmere {
namespace {

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
