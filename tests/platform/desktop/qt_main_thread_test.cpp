#include "platform/desktop/qt_main_thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "tests/platform/desktop/event_loop.h"

namespace dunmere::test {
namespace {

TEST(QtMainThread, PostedWorkRunsLaterOnTheMainThread) {
  QtMainThread mainThread;
  QThread* ranOn = nullptr;
  mainThread.post([&] { ranOn = QThread::currentThread(); });
  EXPECT_EQ(ranOn, nullptr);
  ASSERT_TRUE(waitUntil([&] { return ranOn != nullptr; }));
  EXPECT_EQ(ranOn, QCoreApplication::instance()->thread());
}

TEST(QtMainThread, WorkOfAnotherThreadRunsOnTheMainThreadInOrder) {
  QtMainThread mainThread;
  std::vector<int> ran;
  bool everywhereMain = true;
  std::thread scan([&] {
    for (int i = 0; i < 1000; ++i) {
      mainThread.post([&, i] {
        ran.push_back(i);
        everywhereMain = everywhereMain && QThread::currentThread() == QCoreApplication::instance()->thread();
      });
    }
  });
  EXPECT_TRUE(waitUntil([&] { return ran.size() == 1000; }));
  scan.join();
  std::vector<int> expected(1000);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(ran, expected);
  EXPECT_TRUE(everywhereMain);
}

TEST(QtMainThread, ClosingForQuitDropsQueuedWork) {
  QtMainThread mainThread;
  bool ran = false;
  auto held = std::make_shared<int>(1);
  mainThread.post([&ran, held] { ran = true; });
  mainThread.closeForQuit();
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
  EXPECT_EQ(held.use_count(), 1);  // the dropped work is destroyed, not leaked
}

TEST(QtMainThread, WorkPostedAfterClosingIsDropped) {
  QtMainThread mainThread;
  mainThread.closeForQuit();
  bool ran = false;
  std::thread([&] { mainThread.post([&ran] { ran = true; }); }).join();
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
}

TEST(QtMainThread, ClosingTwiceIsAllowed) {
  QtMainThread mainThread;
  mainThread.closeForQuit();
  mainThread.closeForQuit();
}

/// Posts once more when it goes, as work that owns the last share of something may do.
struct PostsWhenGone {
  QtMainThread& mainThread;
  ~PostsWhenGone() {
    mainThread.post([] {});
  }
};

TEST(QtMainThread, DroppedWorkMayPostAsItGoes) {
  QtMainThread mainThread;
  auto last = std::make_shared<PostsWhenGone>(mainThread);
  mainThread.post([last] {});
  last.reset();
  mainThread.closeForQuit();
  SUCCEED() << "no deadlock";
}

TEST(QtMainThread, ScansMayPostWhileItCloses) {
  for (int round = 0; round < 50; ++round) {
    QtMainThread mainThread;
    std::atomic<bool> started = false;
    std::atomic<bool> stop = false;
    std::thread scan([&] {
      while (!stop) {
        mainThread.post([] {});
        started = true;
      }
    });
    while (!started) std::this_thread::yield();
    mainThread.closeForQuit();
    stop = true;
    scan.join();
  }
}

}  // namespace
}  // namespace dunmere::test
