#include "platform/posix/patience.h"

#include <cerrno>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace dunmere {

/// What a thread left behind still needs when all else is gone.
struct Patience::Shared {
  std::mutex mutex;
  std::condition_variable answered;
  std::set<std::string> asked;  // places that have not answered yet
  std::set<std::string> stuck;  // those of them that were waited for in vain
};

Patience::Patience(std::chrono::milliseconds most) : most_(most), shared_(std::make_shared<Shared>()) {}

/// 0 when `work` has been done.
int Patience::run(const std::string& place, std::function<void()> work) {
  std::unique_lock lock(shared_->mutex);
  if (shared_->stuck.contains(place)) return ETIMEDOUT;
  const auto deadline = std::chrono::steady_clock::now() + most_;
  const auto isFree = [&] { return !shared_->asked.contains(place); };
  if (!shared_->answered.wait_until(lock, deadline, isFree)) return ETIMEDOUT;

  const auto result = std::make_shared<std::optional<int>>();
  auto ask = [place, work = std::move(work), shared = shared_, result]() mutable {
    int error = 0;
    try {
      work();
    } catch (const std::exception&) {
      error = ENOMEM;  // nothing else can fail there but as a value
    }
    work = nullptr;  // before anybody is told: with the answer all that it needed may go
    const std::lock_guard answering(shared->mutex);
    *result = error;
    shared->asked.erase(place);
    shared->stuck.erase(place);
    shared->answered.notify_all();
  };
  shared_->asked.insert(place);
  try {
    std::thread(std::move(ask)).detach();
  } catch (const std::exception& exception) {
    shared_->asked.erase(place);
    const auto* refusal = dynamic_cast<const std::system_error*>(&exception);
    return refusal != nullptr ? refusal->code().value() : ENOMEM;
  }
  if (!shared_->answered.wait_until(lock, deadline, [&] { return result->has_value(); })) {
    shared_->stuck.insert(place);
    return ETIMEDOUT;
  }
  return **result;
}

}  // namespace dunmere
