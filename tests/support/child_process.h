// Child processes for tests that change what a process has only once: its environment, user and limits.
#pragma once

#include <functional>
#include <string>

namespace dunmere::test {

struct ChildResult {
  int exitCode = 0;    ///< what the work returned; 128 + the signal's number when a signal ended it
  std::string output;  ///< all it wrote to the standard output and error
};

/// Runs `work` in a forked child and waits. Failed expectations inside it are printed and make the exit code 1 even if
/// `work` returned 0; an escaped exception makes it 2. Call it while the test has no other threads.
ChildResult runInChild(const std::function<int()>& work);

/// The same after dropPrivileges().
ChildResult runUnprivileged(const std::function<int()>& work);

/// Runs `body` in a forked child; expectations that fail in it fail this test.
void inChildProcess(const std::function<void()>& body);

// For use inside a child only. Each throws std::system_error when the system refuses.

/// Becomes the user nobody.
void becomeNobody();

/// Gives up all of root's rights: becomes nobody or, where that is refused, stays the same user without capabilities.
void dropPrivileges();

/// No further thread can be started.
void forbidThreads();

/// Further writes into files fail as on an exhausted quota; making and renaming files goes on working.
void forbidWriting();

}  // namespace dunmere::test
