#include "sweeper/answer_queue.h"

#include <utility>

namespace dunmere {

void AnswerQueue::add(Apply& answer) {
  const std::lock_guard lock(mutex_);
  if (isClosed_) return;
  // One call to the main thread takes all that wait.
  if (answers_.empty() && !isAwaiting_) post();
  answers_.push_back(std::move(answer));
  came_.notify_all();
}

void AnswerQueue::post() {
  mainThread_.post([queue = shared_from_this()] {
    if (!queue->isClosed_) queue->applyAll_();  // closed on this same thread
  });
}

void AnswerQueue::startAwaiting() {
  const std::lock_guard lock(mutex_);
  isAwaiting_ = true;
}

void AnswerQueue::stopAwaiting() {
  const std::lock_guard lock(mutex_);
  isAwaiting_ = false;
  if (!answers_.empty() && !isClosed_) post();
}

AnswerQueue::Apply AnswerQueue::take(Deadline deadline) {
  std::unique_lock lock(mutex_);
  if (!came_.wait_until(lock, deadline, [this] { return !answers_.empty(); })) return nullptr;
  Apply answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

void AnswerQueue::close() {
  std::deque<Apply> dropped;
  const std::lock_guard lock(mutex_);
  isClosed_ = true;
  dropped.swap(answers_);
}

}  // namespace dunmere
