// Whether there is a graphics processor, by the devices of a made-up machine.
#include <gtest/gtest.h>

#include "platform/desktop/platform_desktop.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

class GraphicsProcessorTest : public testing::Test {
 protected:
  bool isThere() { return hasGraphicsProcessor(devices.path()); }

  TemporaryTree devices;
};

TEST_F(GraphicsProcessorTest, IsNotThereWithoutADevice) {
  EXPECT_FALSE(isThere());
  EXPECT_FALSE(hasGraphicsProcessor(devices.path("missing")));
}

TEST_F(GraphicsProcessorTest, IsNotAScreenAlone) {
  devices.folder("dri");
  devices.file("dri/card0");
  EXPECT_FALSE(isThere());
}

TEST_F(GraphicsProcessorTest, IsWhereProgramsMayRender) {
  devices.folder("dri");
  devices.file("dri/renderD128");
  EXPECT_TRUE(isThere());
}

TEST_F(GraphicsProcessorTest, IsWhereItsDriverIs) {
  devices.file("nvidiactl");
  EXPECT_TRUE(isThere());
  devices.remove("nvidiactl");
  devices.file("dxg");
  EXPECT_TRUE(isThere());
}

}  // namespace
}  // namespace dunmere::test
