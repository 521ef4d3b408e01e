// Measuring volumes that answer, fail, answer late, or never do.
#include "platform/posix/volume_meter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <future>
#include <memory>
#include <thread>

#include "platform/linux/volume_reading.h"

namespace dunmere::test {
namespace {

using std::chrono::milliseconds;

/// A volume that answers only once the test lets it. Outlives the threads that wait for it.
struct DeadVolume {
  std::promise<void> revival;
  std::shared_future<void> revived = revival.get_future().share();
  std::atomic<int> asked = 0;
  std::atomic<int> answered = 0;
};

VolumeReading space(std::string label, std::int64_t totalBytes, std::int64_t availableBytes) {
  return {.label = std::move(label),
          .totalBytes = totalBytes,
          .availableBytes = availableBytes,
          .availableForImportantUsageBytes = std::nullopt};
}

VolumeMeter::Read readsFrom(const std::shared_ptr<DeadVolume>& dead) {
  return [dead](const std::string& path, const std::string&) -> std::expected<VolumeReading, int> {
    if (path != "/dead") return space("alive", 10, 4);
    ++dead->asked;
    dead->revived.wait();
    ++dead->answered;
    return space("back", 20, 5);
  };
}

constexpr milliseconds kShort{20};
constexpr milliseconds kLong{60'000};

TEST(VolumeMeter, AnswerIsPassedOn) {
  VolumeMeter meter(
      [](const std::string& path, const std::string& device) -> std::expected<VolumeReading, int> {
        return space(path + " on " + device, 1, 2);
      },
      kLong);
  EXPECT_EQ(meter.measure("/mnt", "/mnt/below", "/dev/x"), space("/mnt/below on /dev/x", 1, 2));
}

TEST(VolumeMeter, FailureIsPassedOn) {
  VolumeMeter meter([](auto&, auto&) -> std::expected<VolumeReading, int> { return std::unexpected(EIO); }, kLong);
  EXPECT_EQ(meter.measure("/mnt", "/mnt", "").error(), EIO);
  EXPECT_EQ(meter.measure("/mnt", "/mnt", "").error(), EIO);
}

TEST(VolumeMeter, DeadVolumeTimesOutAndOthersGoOnAnswering) {
  const auto dead = std::make_shared<DeadVolume>();
  VolumeMeter meter(readsFrom(dead), kShort);
  EXPECT_EQ(meter.measure("/dead", "/dead", "").error(), ETIMEDOUT);
  VolumeMeter patient(readsFrom(dead), kLong);
  EXPECT_EQ(patient.measure("/alive", "/alive", "")->totalBytes, 10);
  dead->revival.set_value();
}

TEST(VolumeMeter, StuckVolumeIsNotAskedAgain) {
  const auto dead = std::make_shared<DeadVolume>();
  VolumeMeter meter(readsFrom(dead), kShort);
  // So many calls that a wait in each of them would outlast the test's own limit.
  for (int i = 0; i < 20'000; ++i) ASSERT_EQ(meter.measure("/dead", "/dead", "").error(), ETIMEDOUT);
  // The first time-out may have come before its thread ran at all.
  while (dead->asked == 0) std::this_thread::yield();
  EXPECT_EQ(dead->asked, 1);
  dead->revival.set_value();
}

TEST(VolumeMeter, RevivedVolumeIsMeasuredAgain) {
  const auto dead = std::make_shared<DeadVolume>();
  VolumeMeter meter(readsFrom(dead), kShort);
  ASSERT_EQ(meter.measure("/dead", "/dead", "").error(), ETIMEDOUT);
  dead->revival.set_value();
  auto reading = meter.measure("/dead", "/dead", "");
  while (!reading) {
    std::this_thread::yield();
    reading = meter.measure("/dead", "/dead", "");
  }
  EXPECT_EQ(reading->label, "back");
}

TEST(VolumeMeter, ThreadLeftBehindOutlivesItsMeter) {
  const auto dead = std::make_shared<DeadVolume>();
  {
    VolumeMeter meter(readsFrom(dead), kShort);
    ASSERT_EQ(meter.measure("/dead", "/dead", "").error(), ETIMEDOUT);
  }
  dead->revival.set_value();
  while (dead->answered == 0) std::this_thread::yield();
  EXPECT_EQ(dead->answered, 1);
}

TEST(VolumeMeter, CallersOfOneVolumeTakeTurns) {
  std::atomic<int> inside = 0;
  std::atomic<int> most = 0;
  VolumeMeter meter(
      [&](auto&, auto&) -> std::expected<VolumeReading, int> {
        most = std::max<int>(most, ++inside);
        std::this_thread::yield();
        --inside;
        return VolumeReading{};
      },
      kLong);
  std::vector<std::thread> callers;
  for (int i = 0; i < 8; ++i) callers.emplace_back([&meter] { EXPECT_TRUE(meter.measure("/mnt", "/mnt", "")); });
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(most, 1);
}

TEST(VolumeMeter, RealVolumeHasSpace) {
  const auto reading = readVolume("/", "");
  ASSERT_TRUE(reading);
  EXPECT_GT(reading->totalBytes, 0);
  EXPECT_GE(reading->availableBytes, 0);
  EXPECT_LE(reading->availableBytes, reading->totalBytes);
  EXPECT_EQ(reading->label, std::nullopt);
  EXPECT_EQ(readVolume("/nonexistent", "").error(), ENOENT);
}

}  // namespace
}  // namespace dunmere::test
