// LocalMounts: remembers which mounted file systems are of this machine's own and so always answer.
#pragma once

#include <cstdint>
#include <mutex>
#include <set>
#include <utility>

namespace dunmere {

/// Asking a file system what it is may take as long as any other question to it, so the answer is kept. Thread-safe.
class LocalMounts {
 public:
  /// Whether the open file or folder, of any kind of descriptor, lies on a mount that was added. Waits for nothing.
  bool holds(int descriptor) const;

  /// Adds the mount that the open file or folder lies on.
  void add(int descriptor);

 private:
  /// Device and mount number. Before Linux 6.8 the system may use both again, at the earliest for a mount that is made
  /// when this one is gone; a new one of another kind with both of them is not expected.
  using Mount = std::pair<std::uint64_t, std::uint64_t>;

  static bool read(int descriptor, Mount& mount);

  mutable std::mutex mutex_;
  std::set<Mount> mounts_;
};

}  // namespace dunmere
