#include "engine/listing/in_parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace dunmere {
namespace {

TEST(InParallel, DoesEachPieceOnce) {
  for (const std::size_t count : {0UL, 1UL, 2UL, 1000UL}) {
    std::vector<std::atomic<int>> done(count);
    inParallel(count, [&done](std::size_t number) { ++done.at(number); });
    for (std::size_t number = 0; number < count; ++number) ASSERT_EQ(done[number], 1) << number << " of " << count;
  }
}

TEST(InParallel, AsManyThreadsAsThereAreProcessorsTakePart) {
  const std::size_t processors = std::thread::hardware_concurrency();
  std::mutex mutex;
  std::set<std::thread::id> threads;
  inParallel(10'000, [&](std::size_t) {
    {
      const std::lock_guard lock(mutex);
      threads.insert(std::this_thread::get_id());
    }
    // Nobody gets on before all have come.
    for (bool all = false; !all;) {
      std::this_thread::yield();
      const std::lock_guard lock(mutex);
      all = threads.size() >= processors;
    }
  });
  EXPECT_EQ(threads.size(), processors);
  EXPECT_TRUE(threads.contains(std::this_thread::get_id()));
}

TEST(InParallel, OnePieceNeedsNoOtherThread) {
  std::thread::id thread;
  inParallel(1, [&thread](std::size_t) { thread = std::this_thread::get_id(); });
  EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(InParallel, ThrowsWhatThePieceThrewAndBeginsNoOther) {
  std::atomic<int> begun = 0;
  const auto fail = [&begun](std::size_t) {
    ++begun;
    throw std::runtime_error("no");
  };
  EXPECT_THROW(inParallel(100'000, fail), std::runtime_error);
  EXPECT_LE(begun, static_cast<int>(std::thread::hardware_concurrency()));
}

}  // namespace
}  // namespace dunmere
