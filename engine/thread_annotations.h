// Mutex, MutexLock and Condition: the standard library's, with lock rules that Clang checks (-Wthread-safety).
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#ifdef __clang__
#define DUNMERE_THREAD_ATTRIBUTE(...) __attribute__((__VA_ARGS__))
#else
#define DUNMERE_THREAD_ATTRIBUTE(...)
#endif

/// Behind a variable: it is used only while this mutex is held.
#define GUARDED_BY(mutex) DUNMERE_THREAD_ATTRIBUTE(guarded_by(mutex))
/// Behind a function: whoever calls it holds these mutexes.
#define REQUIRES(...) DUNMERE_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))

namespace dunmere {

class DUNMERE_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
 public:
  void lock() DUNMERE_THREAD_ATTRIBUTE(acquire_capability()) { mutex_.lock(); }
  void unlock() DUNMERE_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

 private:
  friend class Condition;

  std::mutex mutex_;
};

/// Holds a mutex until the end of its scope.
class DUNMERE_THREAD_ATTRIBUTE(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) DUNMERE_THREAD_ATTRIBUTE(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.lock();
  }
  ~MutexLock() DUNMERE_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

/// Waits in a loop around its condition, since a predicate's own function would not be seen to hold the mutex.
class Condition {
 public:
  void notifyOne() { condition_.notify_one(); }
  void notifyAll() { condition_.notify_all(); }

  void wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    condition_.wait(lock);
    lock.release();
  }

  /// False when `deadline` has passed.
  template <typename Clock, typename Duration>
  bool waitUntil(Mutex& mutex, const std::chrono::time_point<Clock, Duration>& deadline) REQUIRES(mutex) {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    const std::cv_status status = condition_.wait_until(lock, deadline);
    lock.release();
    return status == std::cv_status::no_timeout;
  }

 private:
  std::condition_variable condition_;
};

}  // namespace dunmere
