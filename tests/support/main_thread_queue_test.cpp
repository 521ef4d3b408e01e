#include "tests/support/main_thread_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace dunmere::test {
namespace {

TEST(MainThreadQueue, RunsWorkInTheOrderOfPosting) {
  MainThreadQueue queue;
  std::vector<int> ran;
  for (int i = 0; i < 3; ++i) queue.post([&ran, i] { ran.push_back(i); });
  EXPECT_TRUE(ran.empty());
  EXPECT_EQ(queue.runQueued(), 3u);
  EXPECT_EQ(ran, (std::vector<int>{0, 1, 2}));
}

TEST(MainThreadQueue, WorkPostedByWorkRunsNextTime) {
  MainThreadQueue queue;
  int ran = 0;
  queue.post([&] { queue.post([&ran] { ++ran; }); });
  EXPECT_EQ(queue.runQueued(), 1u);
  EXPECT_EQ(ran, 0);
  EXPECT_EQ(queue.runQueued(), 1u);
  EXPECT_EQ(ran, 1);
}

TEST(MainThreadQueue, RunNextWaitsForAnotherThread) {
  MainThreadQueue queue;
  std::thread::id ranOn;
  std::thread poster([&] { queue.post([&ranOn] { ranOn = std::this_thread::get_id(); }); });
  EXPECT_TRUE(queue.runNext());
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  poster.join();
}

TEST(MainThreadQueue, RunNextGivesUp) {
  MainThreadQueue queue;
  EXPECT_FALSE(queue.runNext(std::chrono::seconds(0)));
}

TEST(MainThreadQueue, RunUntilStopsAsSoonAsItIsDone) {
  MainThreadQueue queue;
  int ran = 0;
  for (int i = 0; i < 5; ++i) queue.post([&ran] { ++ran; });
  EXPECT_TRUE(queue.runUntil([&ran] { return ran == 2; }));
  EXPECT_EQ(ran, 2);
  EXPECT_FALSE(queue.runUntil([&ran] { return ran == 9; }, std::chrono::seconds(0)));
}

TEST(MainThreadQueue, RunUntilGivesUpOnWorkWithoutEnd) {
  MainThreadQueue queue;
  std::function<void()> again = [&] { queue.post(again); };
  queue.post(again);
  EXPECT_FALSE(queue.runUntil([] { return false; }, std::chrono::seconds(0)));
}

TEST(MainThreadQueue, RunUntilNoticesAChangeWithoutWork) {
  MainThreadQueue queue;
  std::atomic<bool> done = false;
  std::thread changer([&done] { done = true; });
  EXPECT_TRUE(queue.runUntil([&done] { return done.load(); }));
  changer.join();
}

}  // namespace
}  // namespace dunmere::test
