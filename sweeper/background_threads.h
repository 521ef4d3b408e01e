// BackgroundThreads: threads that may get stuck in a file system, as many as are needed, within a bound.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "sweeper/background.h"

namespace dunmere {

/// Keeps threads that have nothing to do for a second, and one of them for good. A thread that is stuck, say in a share
/// whose server is gone, is left to itself; with the works that wait for its place it takes the one thread, however
/// many they are. When no thread can be started, works wait for one that is there.
class BackgroundThreads final : public Background {
 public:
  /// Stuck ones included, each of which costs some 50 KB.
  static constexpr std::size_t kMostThreads = 256;
  /// Of these, for places in one folder: whoever goes down a column on a share that is gone leaves other disks theirs.
  static constexpr std::size_t kMostInOneFolder = 16;

  /// Starts the first thread; throws std::system_error when even that is refused.
  BackgroundThreads();
  /// Drops what has not begun. Waits for nobody: threads end when what they do does.
  ~BackgroundThreads() override;

  void run(const std::string& place, std::function<void()> work, Delay delay) override;

  /// How many there are now, stuck and idle ones included.
  std::size_t threadCount() const;

 private:
  struct Shared;

  const std::shared_ptr<Shared> shared_;  // with the threads, which may outlive this object
};

}  // namespace dunmere
