// Patience: has done what may never end, and waits for it a bounded time.
#pragma once

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace dunmere {

/// Each question is asked on a thread of its own. A thread that is stuck, say in a share whose server is gone, is left
/// behind, at most one for each place: until it comes back, further questions about that place fail at once.
/// Thread-safe; may go while threads left behind are still stuck.
class Patience {
 public:
  /// The time after which a file system that answers at all has long done so.
  static constexpr std::chrono::milliseconds kUsual{1000};

  explicit Patience(std::chrono::milliseconds most = kUsual);

  /// The answer to `question`, which is about `place`, runs on any thread and may never return; whatever it captures
  /// must live as long. Fails with an errno value: ETIMEDOUT for no answer in time, ENOMEM when it ran out of memory,
  /// or what kept a thread from being started. Questions about one place take turns.
  template <typename Answer>
  std::expected<Answer, int> ask(const std::string& place, std::function<Answer()> question) {
    const auto answer = std::make_shared<std::optional<Answer>>();
    const int error = run(place, [answer, question = std::move(question)] { *answer = question(); });
    if (error != 0) return std::unexpected(error);
    return std::move(**answer);
  }

 private:
  struct Shared;

  int run(const std::string& place, std::function<void()> work);

  const std::chrono::milliseconds most_;
  const std::shared_ptr<Shared> shared_;
};

}  // namespace dunmere
