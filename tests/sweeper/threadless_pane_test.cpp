// A pane whose scan gets no thread: a case for Linux, whose limits bind single users.
#include <cstdlib>
#include <future>
#include <string>
#include <vector>

#include "sweeper/background_threads.h"
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

TEST_F(ThreadlessPane, IsAnsweredByTheOneThreadThatIsThere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        BackgroundThreads background;
        forbidThreads();
        std::vector<std::promise<void>> done(10);
        for (std::size_t place = 0; place < done.size(); ++place) {
          background.run(std::to_string(place), [&done, place] { done[place].set_value(); }, Background::Delay(0));
        }
        for (std::promise<void>& each : done) each.get_future().wait();
        std::_Exit(background.threadCount() == 1 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace dunmere::test
