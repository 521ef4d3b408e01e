#include "bench/window/frame_recorder.h"

#include <QQuickWindow>
#include <algorithm>

namespace dunmere::bench {

FrameRecorder::FrameRecorder(QQuickWindow& window) {
  const auto note = [this] {
    const std::lock_guard lock(mutex_);
    shown_.push_back(Clock::now());
  };
  connect(&window, &QQuickWindow::frameSwapped, this, note, Qt::DirectConnection);
}

std::size_t FrameRecorder::frames() const {
  const std::lock_guard lock(mutex_);
  return shown_.size();
}

FrameRecorder::Clock::time_point FrameRecorder::firstFrame() const {
  const std::lock_guard lock(mutex_);
  return shown_.front();
}

FrameIntervals FrameRecorder::between(Clock::time_point from, Clock::time_point to) const {
  const std::lock_guard lock(mutex_);
  std::vector<double> intervals;
  for (std::size_t frame = 1; frame < shown_.size(); ++frame) {
    if (shown_[frame] <= from || shown_[frame - 1] >= to) continue;
    intervals.push_back(std::chrono::duration<double>(shown_[frame] - shown_[frame - 1]).count());
  }
  if (intervals.empty()) return {};
  std::ranges::sort(intervals);
  const std::size_t last = intervals.size() - 1;
  return {intervals.size(), intervals[last / 2], intervals[last - last / 100], intervals[last]};
}

}  // namespace dunmere::bench
