// Threads that may get stuck: what is done side by side, what in turn, and how many they are.

#include "sweeper/background_threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace dunmere::test {
namespace {

constexpr Background::Delay kNone{0};

/// A place that does not answer until it is opened. Owned jointly with those who are stuck in it.
class Gate {
 public:
  void open() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
    opened_.notify_all();
  }
  void wait() {
    std::unique_lock lock(mutex_);
    opened_.wait(lock, [this] { return isOpen_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool isOpen_ = false;
};

class BackgroundThreadsTest : public ::testing::Test {
 protected:
  ~BackgroundThreadsTest() override { gate_->open(); }

  void runStuck(const std::string& place) {
    background_.run(place, [gate = gate_] { gate->wait(); }, kNone);
  }
  /// Whether a work about `place` is done while others are stuck.
  bool answers(const std::string& place) {
    const auto done = std::make_shared<std::promise<void>>();
    background_.run(place, [done] { done->set_value(); }, kNone);
    return done->get_future().wait_for(std::chrono::seconds(20)) == std::future_status::ready;
  }

  std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
  BackgroundThreads background_;
};

TEST_F(BackgroundThreadsTest, APlaceThatNeverAnswersHoldsUpNoOther) {
  for (int i = 0; i < 10; ++i) {
    runStuck("/dead/" + std::to_string(i));
    EXPECT_TRUE(answers("/alive"));
  }
}

TEST_F(BackgroundThreadsTest, APlaceThatNeverAnswersTakesOneThreadHoweverManyWorksWaitForIt) {
  for (int i = 0; i < 1000; ++i) runStuck("/dead");
  EXPECT_TRUE(answers("/alive"));
  EXPECT_LE(background_.threadCount(), 3U);
}

TEST_F(BackgroundThreadsTest, ManyDeadPlacesInOneFolderLeaveThreadsForOthers) {
  for (int i = 0; i < 1000; ++i) runStuck("/dead/" + std::to_string(i));
  EXPECT_TRUE(answers("/alive"));
  EXPECT_TRUE(answers("/dead"));
  EXPECT_LE(background_.threadCount(), BackgroundThreads::kMostInOneFolder + 2);
  gate_->open();
  EXPECT_TRUE(answers("/dead/999"));
}

TEST_F(BackgroundThreadsTest, ThreadsAreBoundedHoweverManyPlacesAreDead) {
  for (int i = 0; i < 1000; ++i) runStuck("/dead " + std::to_string(i) + "/folder");
  EXPECT_EQ(background_.threadCount(), BackgroundThreads::kMostThreads);
  gate_->open();
  EXPECT_TRUE(answers("/dead 999/folder"));
}

TEST_F(BackgroundThreadsTest, WorksAboutOnePlaceAreDoneInTurn) {
  std::vector<int> order;  // without a lock: the thread sanitizer would see two at once
  std::latch done(100);
  for (int i = 0; i < 100; ++i) {
    background_.run(
        "/place",
        [&, i] {
          order.push_back(i);
          done.count_down();
        },
        kNone);
    if (i % 10 == 0) {
      EXPECT_TRUE(answers("/other"));
    }
  }
  done.wait();
  ASSERT_EQ(order.size(), 100U);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(BackgroundThreadsTest, ADelayedWorkLetsLaterOnesPass) {
  std::promise<void> delayed;
  background_.run("/place", [&] { delayed.set_value(); }, std::chrono::milliseconds(50));
  EXPECT_TRUE(answers("/place"));
  delayed.get_future().wait();
}

TEST_F(BackgroundThreadsTest, AWorkMayAskForMore) {
  std::promise<void> done;
  background_.run(
      "/a", [&] { background_.run("/a", [&] { background_.run("/b", [&] { done.set_value(); }, kNone); }, kNone); },
      kNone);
  done.get_future().wait();
}

TEST_F(BackgroundThreadsTest, WhatWasNotBegunIsDroppedAtTheEndAndNobodyWaitsForTheRest) {
  const auto begun = std::make_shared<std::promise<void>>();
  const auto kept = std::make_shared<int>();
  {
    BackgroundThreads background;
    background.run(
        "/dead",
        [gate = gate_, begun] {
          begun->set_value();
          gate->wait();
        },
        kNone);
    begun->get_future().wait();
    background.run("/dead", [kept] { ADD_FAILURE() << "it was begun"; }, kNone);
  }
  EXPECT_EQ(kept.use_count(), 1) << "what it needed is let go";
}

}  // namespace
}  // namespace dunmere::test
