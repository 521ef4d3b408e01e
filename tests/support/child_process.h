// runInChild, runUnprivileged: part of a test in a process of its own, whose rights, limits and mounts it may change.
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

/// The same without any of root's rights: uid, gid and groups of nobody. Run by somebody other than root, it leaves the
/// user as it is.
ChildResult runUnprivileged(const std::function<int()>& work);

/// The same in a mount namespace of its own, whose mounts nobody else sees and which go with the child. Needs
/// root, or a system that lets users have namespaces.
ChildResult runWithOwnMounts(const std::function<int()>& work);

}  // namespace dunmere::test
