// AnswerQueue: carries answers from background threads to a pane that may be gone by the time they arrive.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <utility>

#include "engine/thread_annotations.h"
#include "sweeper/main_thread.h"
#include "sweeper/memory_retry.h"

namespace dunmere {

/// Owned jointly by a pane and those who answer it. put() is called on any thread, everything else on the main thread.
/// Answers are applied there in the order in which they came; after close() none is any more.
class AnswerQueue : public std::enable_shared_from_this<AnswerQueue> {
 public:
  using Apply = std::function<void()>;
  using Deadline = std::chrono::steady_clock::time_point;
  static constexpr Deadline kNow = Deadline::min();  ///< long past: waits for nothing

  /// `applyAll` has the owner apply the waiting answers while it is not awaiting any; it is not called after close().
  AnswerQueue(MainThread& mainThread, std::function<void()> applyAll)
      : mainThread_(mainThread), applyAll_(std::move(applyAll)) {}

  /// Waits for nothing but memory. `answer` is called like an Apply.
  template <typename Answer>
  void put(Answer answer) {
    Apply apply;
    untilMemoryAllows([&] { apply = std::move(answer); });  // memory is taken before `answer` is moved
    untilMemoryAllows([&] { add(apply); });
  }

  /// From here to stopAwaiting() the owner takes the answers itself.
  void startAwaiting();
  void stopAwaiting();
  /// The next answer, waiting for one until `deadline`; null when none came.
  Apply take(Deadline deadline);

  void close();

 private:
  void add(Apply& answer);
  bool isClosed();
  void post() REQUIRES(mutex_);

  MainThread& mainThread_;
  const std::function<void()> applyAll_;
  Mutex mutex_;
  Condition came_;
  std::deque<Apply> answers_ GUARDED_BY(mutex_);
  bool isAwaiting_ GUARDED_BY(mutex_) = false;
  bool isClosed_ GUARDED_BY(mutex_) = false;
};

}  // namespace dunmere
