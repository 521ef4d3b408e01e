// A pane whose scan gets no thread: a case for Linux, whose limits bind single users.
#include <cstdlib>

#include "tests/support/child_process.h"
#include "tests/support/machine.h"
#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

class ThreadlessPane : public PaneTest {
 protected:
  void SetUp() override { DUNMERE_NEEDS(Feature::threadLimit); }
};

TEST_F(ThreadlessPane, SaysThatItsScanFailed) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  fileSystem_.addFile("/tree/file", 1000);
  EXPECT_EXIT(
      {
        forbidThreads();
        pane().beginBrowsing(FileUrl("/tree"));
        const bool failed = pane().phase() == Phase::chooseTarget && !pane().inventory() &&
                            pane().loadError() == "The file couldn’t be opened." && world_.notifications == 1;
        std::_Exit(failed ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace dunmere::test
