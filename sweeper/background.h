// Background: where the pane has done what may wait for a file system.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace dunmere {

/// Implementations are thread-safe and outlive every pane.
class Background {
 public:
  using Delay = std::chrono::nanoseconds;

  /// How long somebody who has asked waits for an answer, so that a disk that answers at once looks as if it had been
  /// asked directly. Nobody notices: a frame lasts 16.7 ms, of which painting takes up to 6.
  static constexpr std::chrono::milliseconds kMoment{10};

  virtual ~Background() = default;

  /// Has `work`, which is about `place` (a folder, a mount point) and must not throw, done on another thread when
  /// `delay` has passed; returns at once. Works about one place are done one at a time, works about different places
  /// side by side: a place that never answers holds up nothing else. Any thread. When the application is quitting, the
  /// work may be dropped.
  virtual void run(const std::string& place, std::function<void()> work, Delay delay = Delay(0)) = 0;

  /// kMoment; tests, which step the answers, wait for none.
  virtual std::chrono::milliseconds moment() const { return kMoment; }
};

}  // namespace dunmere
