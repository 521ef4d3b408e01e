#include "sweeper/snapshot_mailbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "tests/support/main_thread_queue.h"

namespace dunmere {
namespace {

using test::MainThreadQueue;

/// Long enough for a delivery that does not wait to return; what is right never depends on it.
constexpr std::chrono::milliseconds kMoment(50);
constexpr std::chrono::seconds kLong(20);

class SnapshotMailboxTest : public ::testing::Test {
 protected:
  /// Delivers on a thread of its own; the future is ready when the delivery has ended.
  std::future<void> deliverOnThread(std::function<void()> work) {
    return std::async(std::launch::async,
                      [mailbox = mailbox_, work = std::move(work)]() mutable { mailbox->deliver(std::move(work)); });
  }
  static bool hasEnded(const std::future<void>& delivery, std::chrono::milliseconds within) {
    return delivery.wait_for(within) == std::future_status::ready;
  }
  void waitForPosts(int count) const {
    while (queue_.posted() < count) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  /// Counts what is posted.
  class CountingQueue : public MainThreadQueue {
   public:
    void post(std::function<void()> work) override {
      MainThreadQueue::post(std::move(work));
      ++posted_;
    }
    int posted() const { return posted_; }

   private:
    std::atomic<int> posted_ = 0;
  };

  CountingQueue queue_;
  std::shared_ptr<SnapshotMailbox> mailbox_ = std::make_shared<SnapshotMailbox>(queue_);
};

TEST_F(SnapshotMailboxTest, WorkRunsOnTheMainThread) {
  std::thread::id ranOn;
  auto delivery = deliverOnThread([&ranOn] { ranOn = std::this_thread::get_id(); });
  ASSERT_TRUE(queue_.runNext());
  delivery.get();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(SnapshotMailboxTest, DeliveryWaitsUntilItsWorkHasRun) {
  bool ran = false;
  auto delivery = deliverOnThread([&ran] { ran = true; });
  EXPECT_FALSE(hasEnded(delivery, kMoment));
  EXPECT_FALSE(ran);
  ASSERT_TRUE(queue_.runNext());
  EXPECT_TRUE(hasEnded(delivery, kLong));
  EXPECT_TRUE(ran);
}

TEST_F(SnapshotMailboxTest, DeliveryWaitsUntilItsWorkIsDone) {
  std::future<void> delivery;
  bool endedEarly = true;
  delivery = deliverOnThread([&] { endedEarly = hasEnded(delivery, kMoment); });
  ASSERT_TRUE(queue_.runNext());
  delivery.get();
  EXPECT_FALSE(endedEarly);
}

TEST_F(SnapshotMailboxTest, DeliveryWaitsForItsOwnWorkOnly) {
  auto first = deliverOnThread([] {});
  std::promise<void> secondMayStart;
  auto second = std::async(std::launch::async, [&, start = secondMayStart.get_future()]() mutable {
    start.get();
    mailbox_->deliver([] {});
  });
  ASSERT_TRUE(queue_.runNext());
  ASSERT_TRUE(hasEnded(first, kLong));
  secondMayStart.set_value();
  EXPECT_FALSE(hasEnded(second, kMoment));
  ASSERT_TRUE(queue_.runNext());
  EXPECT_TRUE(hasEnded(second, kLong));
}

TEST_F(SnapshotMailboxTest, ClosingEndsEveryWaitingDelivery) {
  std::vector<std::future<void>> deliveries;
  bool ran = false;
  for (int i = 0; i < 4; ++i) deliveries.push_back(deliverOnThread([&ran] { ran = true; }));
  waitForPosts(4);
  mailbox_->close();
  for (const auto& delivery : deliveries) EXPECT_TRUE(hasEnded(delivery, kLong));
  EXPECT_FALSE(ran);
}

TEST_F(SnapshotMailboxTest, QueuedWorkDoesNotRunAfterClosing) {
  bool ran = false;
  auto delivery = deliverOnThread([&ran] { ran = true; });
  waitForPosts(1);
  mailbox_->close();
  EXPECT_EQ(queue_.runQueued(), 1u);
  delivery.get();
  EXPECT_FALSE(ran);
}

TEST_F(SnapshotMailboxTest, ClosedMailboxPostsNothing) {
  EXPECT_FALSE(mailbox_->isClosed());
  mailbox_->close();
  EXPECT_TRUE(mailbox_->isClosed());
  mailbox_->deliver([] { FAIL() << "delivered to a closed mailbox"; });
  EXPECT_EQ(queue_.posted(), 0);
}

TEST_F(SnapshotMailboxTest, WorkMayCloseItsOwnMailbox) {
  auto delivery = deliverOnThread([this] { mailbox_->close(); });
  ASSERT_TRUE(queue_.runNext());
  EXPECT_TRUE(hasEnded(delivery, kLong));
}

TEST_F(SnapshotMailboxTest, QueuedWorkOutlivesTheOwnersOfTheMailbox) {
  auto delivery = deliverOnThread([] { FAIL() << "ran after closing"; });
  waitForPosts(1);
  mailbox_->close();
  mailbox_.reset();
  delivery.get();
  EXPECT_EQ(queue_.runQueued(), 1u);
}

TEST_F(SnapshotMailboxTest, DeliveriesOfSeveralScansAllArrive) {
  std::vector<std::future<void>> deliveries;
  int ran = 0;
  for (int i = 0; i < 8; ++i) deliveries.push_back(deliverOnThread([&ran] { ++ran; }));
  EXPECT_TRUE(queue_.runUntil([&ran] { return ran == 8; }));
  for (const auto& delivery : deliveries) EXPECT_TRUE(hasEnded(delivery, kLong));
}

}  // namespace
}  // namespace dunmere
