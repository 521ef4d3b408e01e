// SlowShare: a mounted share that shows a folder and takes its time for every answer.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace dunmere::test {

struct SlowShareOptions {
  std::chrono::microseconds delay{0};  ///< from each question to its answer
  bool isSerial = false;               ///< answers one question after the other, not any number side by side
  bool tellsKinds = true;              ///< whether reading a folder tells what its entries are
  std::uint64_t claimedBlocks = 0;     ///< of 4,096 bytes, that it is large; 0: what the folder's volume says
  bool trustsNames = false;            ///< names are kept by the system for an hour, attributes not at all
};

/// Read-only; attributes may be kept by the system for a second, as shares usually allow. To be made in a process with
/// mounts of its own and without threads. Its server is another process, which ends with this one: a thread that waits
/// for a server of its own process could never end.
class SlowShare {
 public:
  /// Shows `folder` at `mountPoint`. `nodePath` is free for a device node, which a small system may lack. Throws
  /// std::system_error.
  SlowShare(const std::string& folder, const std::string& mountPoint, const std::string& nodePath,
            SlowShareOptions options);
  /// Ends the server: whoever waits gets an error.
  ~SlowShare();
  SlowShare(const SlowShare&) = delete;
  SlowShare& operator=(const SlowShare&) = delete;

  /// How many questions it was asked.
  std::size_t questions() const { return *questions_; }

 private:
  std::atomic<std::size_t>* questions_;  // shared with the server
  pid_t server_ = 0;
};

}  // namespace dunmere::test
