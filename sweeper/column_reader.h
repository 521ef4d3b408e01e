// ColumnReader: lists one open column in the background, again and again.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "engine/file_system.h"
#include "engine/listing/column_listing.h"
#include "engine/sweep_inventory.h"
#include "engine/thread_annotations.h"
#include "sweeper/background.h"
#include "sweeper/link_looks.h"

namespace dunmere {

/// Lives as long as its column is open, and on in the background until its last listing ends. The file system and the
/// background must outlive it.
class ColumnReader : public std::enable_shared_from_this<ColumnReader> {
 public:
  enum class Urgency {
    paced,   ///< one of many snapshots: listings take a tenth of the time at most
    atOnce,  ///< somebody waits for it
  };
  struct Request {
    std::uint64_t number = 0;  ///< comes back with the answer
    SweepInventory inventory;
    Urgency urgency = Urgency::paced;
    bool onlyNewLinks = false;  ///< those that were looked at before are not looked at again
  };
  using Rows = std::expected<ColumnRows, SweepError>;
  /// Called in the background, after each listing, and with the number 0 while the disk keeps a listing waiting: for
  /// the rows as they were, with the newest sizes. One call at a time. Must not throw.
  using Answer = std::function<void(std::uint64_t number, Rows rows)>;

  /// `shown` are rows that the column has already.
  static std::shared_ptr<ColumnReader> make(FileSystem& fileSystem, Background& background, const FileUrl& folder,
                                            const ColumnRows& shown, Answer answer);

  /// Has the folder listed; a request that has not begun is replaced. Main thread.
  void request(Request request);

  /// The column is closed: gives up what has not begun, and `reader` itself, whose memory goes in the background.
  static void close(std::shared_ptr<ColumnReader> reader);

 private:
  using Clock = std::chrono::steady_clock;

  ColumnReader(FileSystem& fileSystem, Background& background, const FileUrl& folder, const ColumnRows& shown,
               Answer answer);

  void requestLinks();
  void schedule(const std::string& place, void (ColumnReader::*step)(), Background::Delay delay);
  void scheduleListing(Background::Delay delay);
  void scheduleSizing();
  void work();
  std::optional<Request> takeRequest();
  void list(Request request);
  void size();
  Rows newestRows() REQUIRES(answering_);

  FileSystem& fileSystem_;
  Background& background_;
  const FileUrl folder_;
  const Answer answer_;
  std::shared_ptr<LinkLooks> links_;  // set once, when it is made
  ColumnListing listing_;             // read by the background alone, one folder on one thread at a time

  Mutex answering_;  // rows are answered in the order in which they are made; taken before mutex_
  Mutex mutex_;
  std::optional<Request> next_ GUARDED_BY(mutex_);
  std::optional<Request> last_ GUARDED_BY(mutex_);
  bool isScheduled_ GUARDED_BY(mutex_) = false;
  bool isListing_ GUARDED_BY(mutex_) = false;
  bool isSizing_ GUARDED_BY(mutex_) = false;
  Clock::time_point pausedUntil_ GUARDED_BY(mutex_);
  Background::Delay sizingDelay_ GUARDED_BY(mutex_);
};

}  // namespace dunmere
