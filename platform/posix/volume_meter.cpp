#include "platform/posix/volume_meter.h"

#include <cerrno>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

namespace dunmere {

namespace {

using Answer = std::optional<std::expected<VolumeReading, int>>;

}  // namespace

/// What a thread left behind still needs when the meter itself is gone.
struct VolumeMeter::Shared {
  std::mutex mutex;
  std::condition_variable answered;
  std::set<std::string> asked;  // mount points that have not answered yet
  std::set<std::string> stuck;  // those of them that were waited for in vain
};

VolumeMeter::VolumeMeter(Read read, std::chrono::milliseconds patience)
    : read_(std::move(read)), patience_(patience), shared_(std::make_shared<Shared>()) {}

std::expected<VolumeReading, int> VolumeMeter::measure(const std::string& mountPoint, const std::string& path,
                                                       const std::string& device) {
  std::unique_lock lock(shared_->mutex);
  if (shared_->stuck.contains(mountPoint)) return std::unexpected(ETIMEDOUT);
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  // Another caller may be asking the same volume just now: one at a time.
  const auto isFree = [&] { return !shared_->asked.contains(mountPoint); };
  if (!shared_->answered.wait_until(lock, deadline, isFree)) return std::unexpected(ETIMEDOUT);

  auto answer = std::make_shared<Answer>();
  const auto ask = [=, read = read_, shared = shared_] {
    Answer reading;
    try {
      reading = read(path, device);
    } catch (const std::exception&) {
      reading = std::unexpected(ENOMEM);  // nothing else can fail there but as a value
    }
    const std::lock_guard answering(shared->mutex);
    *answer = std::move(reading);
    shared->asked.erase(mountPoint);
    shared->stuck.erase(mountPoint);
    shared->answered.notify_all();
  };
  shared_->asked.insert(mountPoint);
  try {
    std::thread(ask).detach();
  } catch (const std::system_error& error) {
    shared_->asked.erase(mountPoint);
    return std::unexpected(error.code().value());
  }
  if (!shared_->answered.wait_until(lock, deadline, [&] { return answer->has_value(); })) {
    shared_->stuck.insert(mountPoint);
    return std::unexpected(ETIMEDOUT);
  }
  return **answer;
}

}  // namespace dunmere
