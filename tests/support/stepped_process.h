// runStepped: a process that is stopped before and after each of its system calls.
#pragma once

#include <sys/types.h>

#include <functional>

namespace dunmere::test {

/// One stop. Usable only while the process is stopped at it.
class SystemCallStop {
 public:
  SystemCallStop(pid_t process, int number) : process_(process), number_(number) {}

  int number() const { return number_; }  ///< from 0 on
  /// Which call it is before (SYS_openat …); -1 after a call.
  long callAhead() const;
  void kill() const;  ///< SIGKILL: no further instruction of the process runs
  /// Before a call only: has it fail with `error` instead of being made. x86-64 and arm64 only.
  void fail(int error) const;

 private:
  pid_t process_;
  int number_;
};

/// Runs `prepare`, then `work` in a forked child and calls `atStop` here at each stop of `work`. Returns what `work`
/// returned, or minus the number of the signal that ended it. Throws std::system_error when the system refuses. Call it
/// while the process has no other threads.
int runStepped(const std::function<void()>& prepare, const std::function<int()>& work,
               const std::function<void(const SystemCallStop&)>& atStop);

}  // namespace dunmere::test
