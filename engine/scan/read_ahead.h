// ReadAhead: hands the folders of a tree to one consumer in depth-first order while other threads read the next ones.
#pragma once

#include <cstddef>
#include <exception>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <variant>
#include <vector>

#include "engine/file_system.h"
#include "engine/scan/folder_reading.h"
#include "engine/thread_annotations.h"

namespace dunmere {

/// The order of consumption is one list. Most folders are one chunk in it, a folder of many entries is several, one
/// after the other. The list starts with the chunk being consumed; after the last chunk of every folder come its
/// sub-folders, in directory order, and they in turn come before its siblings. A chunk is either *claimed* (some thread
/// reads it or has read it) or *pending*: as one of the sub-folders of a folder that was read, or as the rest of a
/// folder whose first chunks are claimed. A reader claims the first pending one; so does the consumer when it gets to
/// one that nobody claimed, and as long as it would otherwise wait for a reader. So one giant folder keeps several
/// threads as busy as many small ones do.
///
/// What the consumer gets does not depend on the number of readers. With none it reads everything itself. What is held
/// in memory is bounded: at the bound nothing more is read ahead until half of it has been consumed.
///
/// One thread makes, uses and destroys it; destruction waits for the readers, each of which finishes at most the one
/// chunk that it is in.
class ReadAhead {
 public:
  /// One folder as the consumer meets it. Packages and links are never met.
  struct Folder {
    std::string_view name;  ///< empty for the root; valid until the next nextFiles() or nextFolder()
    std::size_t depth = 0;  ///< 0 for the root
  };

  /// Starts up to `readers` threads of utility priority; one that cannot be started is simply missing. `fileSystem` is
  /// asked for nothing but the priority.
  ReadAhead(FileSystem& fileSystem, std::shared_ptr<OpenFolder> root, unsigned readers);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  /// Goes on to the next folder, after the files of the one before have been taken to the end; none at the end of the
  /// tree. Waits for another thread that is reading it. Throws what the reading threw (std::bad_alloc).
  std::optional<Folder> nextFolder();

  /// More files of this folder as packed records, in directory order; none at its end. Valid until the next call.
  /// Throws as nextFolder() does.
  std::optional<std::string_view> nextFiles();

  /// Whether this folder could not be opened or not be read to its end. To be asked when nextFiles() has given none.
  bool failed() const { return failed_; }

 private:
  struct ClaimedChunk {
    std::string name;  // of a folder's first chunk
    std::size_t depth = 0;
    bool continuesFolder = false;    // not its folder's first chunk
    bool beforeFirstPending = true;  // exact for chunks before firstPending_, updated lazily for the others
    bool finished = false;
    bool failed = false;
    std::exception_ptr fault;
    std::string files;          // packed records, once it is finished
    std::size_t heldBytes = 0;  // its share of heldBytes_
  };

  struct PendingFolders {
    std::shared_ptr<OpenFolder> parent;  // kept only until the last of them is opened
    FolderNames names;
    std::size_t depth = 0;
  };

  struct PendingChunk {
    FolderRest rest;
    std::size_t depth = 0;
    std::size_t heldBytes = 0;  // its share of heldBytes_
  };

  using Order = std::list<std::variant<ClaimedChunk, PendingFolders, PendingChunk>>;
  using Iterator = Order::iterator;

  // A chunk that whoever claimed it may read now.
  struct Claim {
    Iterator chunk;
    std::shared_ptr<OpenFolder> parent;  // of a folder's first chunk
    Order pending;  // the pending element, if this used it up: read, and destroyed, without the mutex
  };

  static ClaimedChunk& claimed(Iterator chunk) { return std::get<ClaimedChunk>(*chunk); }
  static bool continuesFolder(const Order::value_type& element);

  // The list.
  Iterator firstPending() REQUIRES(mutex_);
  Claim claimAt(Iterator pending) REQUIRES(mutex_);
  void setHeld(std::size_t& share, std::size_t bytes) REQUIRES(mutex_);
  void insertAfter(Iterator chunk, Order& pending) REQUIRES(mutex_);
  void updateFull() REQUIRES(mutex_);
  bool mayClaimMore() REQUIRES(mutex_);
  void wakeReader() REQUIRES(mutex_);

  // Reading, on any thread, without the mutex.
  void read(Claim claim, FolderReading& reading) noexcept;
  void readChunk(Iterator chunk, FolderReading& reading);
  void insertRest(Iterator chunk, FolderReading& reading);
  void finish(Iterator chunk, FolderReading& reading, bool hasRest);
  void fail(Iterator chunk, std::exception_ptr fault) noexcept;

  // The readers.
  void startReaders(unsigned readers);
  void readAsThread();
  bool waitForWork() REQUIRES(mutex_);

  // The consumer.
  bool advance();
  void takeFiles();
  void waitForHead() REQUIRES(mutex_);
  void readWithoutMutex(Claim claim, FolderReading& reading) REQUIRES(mutex_);

  FileSystem& fileSystem_;

  Mutex mutex_;
  Condition workCame_;         // a reader may claim something
  Condition consumerMayGoOn_;  // its chunk is finished, or there is something to claim meanwhile
  Order order_ GUARDED_BY(mutex_);
  Iterator firstPending_ GUARDED_BY(mutex_);  // the first pending element, or a claimed chunk before it
  Iterator head_;                             // the chunk being consumed; the consumer alone sets it, with the mutex
  std::size_t claimedCount_ GUARDED_BY(mutex_) = 1;
  std::size_t heldBytes_ GUARDED_BY(mutex_) = 0;  // of what was read and not yet consumed
  unsigned idleReaders_ GUARDED_BY(mutex_) = 0;
  bool consumerWaits_ GUARDED_BY(mutex_) = false;
  bool full_ GUARDED_BY(mutex_) = false;
  bool stop_ GUARDED_BY(mutex_) = false;

  // The consumer's own.
  std::shared_ptr<OpenFolder> root_;  // until it is read
  FolderReading reading_;
  std::string files_;
  bool headTaken_ = false;    // files_ are, or were, the head's
  bool folderEnded_ = false;  // with the head
  bool failed_ = false;

  std::vector<std::thread> readers_;
};

}  // namespace dunmere
