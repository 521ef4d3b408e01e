// FrameRecorder: notes when each frame of a window was shown, and tells how evenly they came.
#pragma once

#include <QObject>
#include <chrono>
#include <mutex>
#include <vector>

class QQuickWindow;

namespace dunmere::bench {

/// How long one frame stood until the next, over a span of time; all in seconds.
struct FrameIntervals {
  std::size_t count = 0;
  double median = 0;
  double percentile99 = 0;
  double longest = 0;
};

/// Frames may be shown by a thread of their own; every function is called on the main thread.
class FrameRecorder : public QObject {
 public:
  using Clock = std::chrono::steady_clock;

  explicit FrameRecorder(QQuickWindow& window);

  std::size_t frames() const;
  Clock::time_point firstFrame() const;  ///< only once there is one

  /// Of all intervals that lie at least partly in the span. The frame that ends the last of them must have been shown.
  FrameIntervals between(Clock::time_point from, Clock::time_point to) const;

 private:
  mutable std::mutex mutex_;
  std::vector<Clock::time_point> shown_;  // under the mutex
};

}  // namespace dunmere::bench
