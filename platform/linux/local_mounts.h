// LocalMounts: remembers which mounted file systems are of this machine's own and so always answer.
#pragma once

#include <cstdint>
#include <mutex>
#include <set>

namespace dunmere {

/// Asking a file system what it is may take as long as any other question to it, so the answer is kept. Before
/// Linux 6.8 nothing is: a mount's number may then be used again at once, even for a share. Thread-safe.
class LocalMounts {
 public:
  /// Whether the open file or folder, of any kind of descriptor, lies on a mount that was added. Waits for nothing.
  bool holds(int descriptor) const;

  /// Adds the mount that the open file or folder lies on.
  void add(int descriptor);

 private:
  mutable std::mutex mutex_;
  std::set<std::uint64_t> mounts_;  // by numbers that are never used again
};

}  // namespace dunmere
