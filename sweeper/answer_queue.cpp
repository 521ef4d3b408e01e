#include "sweeper/answer_queue.h"

#include <utility>

namespace dunmere {

void AnswerQueue::add(Apply& answer) {
  const MutexLock lock(mutex_);
  if (isClosed_) return;
  // One call to the main thread takes all that wait.
  if (answers_.empty() && !isAwaiting_) post();
  answers_.push_back(std::move(answer));
  came_.notifyAll();
}

void AnswerQueue::post() {
  mainThread_.post([queue = shared_from_this()] {
    // It cannot close between this look and the call: it is closed on this same thread.
    if (!queue->isClosed()) queue->applyAll_();
  });
}

void AnswerQueue::startAwaiting() {
  const MutexLock lock(mutex_);
  isAwaiting_ = true;
}

void AnswerQueue::stopAwaiting() {
  const MutexLock lock(mutex_);
  isAwaiting_ = false;
  if (!answers_.empty() && !isClosed_) post();
}

AnswerQueue::Apply AnswerQueue::take(Deadline deadline) {
  const MutexLock lock(mutex_);
  while (answers_.empty()) {
    if (!came_.waitUntil(mutex_, deadline) && answers_.empty()) return nullptr;
  }
  Apply answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

void AnswerQueue::close() {
  std::deque<Apply> dropped;
  const MutexLock lock(mutex_);
  isClosed_ = true;
  dropped.swap(answers_);
}

bool AnswerQueue::isClosed() {
  const MutexLock lock(mutex_);
  return isClosed_;
}

}  // namespace dunmere
