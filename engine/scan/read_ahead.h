// ReadAhead: hands the folders of a tree to one consumer in depth-first order while other threads read the next ones.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <variant>
#include <vector>

#include "engine/file_system.h"
#include "engine/scan/folder_reading.h"

namespace dunmere {

/// The order of consumption is one list of *parts*: most folders are one part, a folder of many entries is several, one
/// behind the other. The list starts with the part being consumed; behind the last part of every folder stand its
/// sub-folders, in directory order, and they in turn come before its siblings. A part is either *taken* (some thread
/// reads it or has read it) or *waiting*: as one of the sub-folders of a folder that was read, or as the rest of a
/// folder whose first parts are taken. A reader takes the first that waits; so does the consumer when it gets to one
/// that nobody took, and as long as it would otherwise have to wait for one that a reader is in. So one giant folder
/// keeps several threads as busy as many small ones do.
///
/// What the consumer gets does not depend on the number of readers. With none it reads everything itself. What is held
/// in memory is bounded: at the bound nothing more is read ahead until half of it has been consumed.
///
/// One thread makes, uses and destroys it; destruction waits for the readers, each of which finishes at most the one
/// part that it is in.
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
  struct TakenPart {
    std::string name;  // of a folder's first part
    std::size_t depth = 0;
    bool isFurther = false;          // not its folder's first part
    bool beforeFirstWaiting = true;  // kept up to date for those before it; for others when they come to stand there
    bool finished = false;
    bool failed = false;
    std::exception_ptr fault;
    std::string files;          // packed records, when it is finished
    std::size_t heldBytes = 0;  // its share of heldBytes_, which counts what was read and not yet consumed
  };

  struct WaitingFolders {
    std::shared_ptr<OpenFolder> parent;  // kept only until the last of them is opened
    FolderNames names;
    std::size_t depth = 0;
  };

  struct WaitingRest {
    FolderRest rest;
    std::size_t depth = 0;
    std::size_t heldBytes = 0;  // as above
  };

  using Order = std::list<std::variant<TakenPart, WaitingFolders, WaitingRest>>;
  using Lock = std::unique_lock<std::mutex>;

  // A part that its taker may read now.
  struct Claim {
    Order::iterator place;
    std::shared_ptr<OpenFolder> parent;  // of a folder's first part
    Order
        waiting;  // what waited there, when nothing of it is left: a rest, or folders to be destroyed without the lock
  };

  static TakenPart& takenAt(Order::iterator place) { return std::get<TakenPart>(*place); }
  // Whether it belongs to the same folder as the part before.
  static bool isFurther(const Order::value_type& element);

  // Under the lock.
  Order::iterator firstWaiting();
  Claim claim(Order::iterator waiting);
  Claim claimFolder(Order::iterator waiting);
  Claim claimRest(Order::iterator waiting);
  void hold(std::size_t& share, std::size_t bytes);
  void insertBehind(Order::iterator place, Order& waiting);
  void updateFull();
  bool mayTakeMore();
  void wakeReader();

  // Any thread.
  void read(Claim claimed, FolderReading& reading);
  void readPart(Order::iterator place, FolderReading& reading);
  void insertRest(Order::iterator place, FolderReading& reading);
  void finish(Order::iterator place, FolderReading& reading, bool hasRest);
  void fail(Order::iterator place, std::exception_ptr fault) noexcept;

  // Readers.
  void startReaders(unsigned readers);
  void readAsThread();
  bool waitForWork(Lock& lock);

  // The consumer.
  bool advance();
  void takeFiles();
  void waitForHead(Lock& lock);

  FileSystem& fileSystem_;

  std::mutex mutex_;
  std::condition_variable workCame_;         // a reader may take something
  std::condition_variable consumerMayGoOn_;  // its part is finished, or there is something to take meanwhile
  Order order_;
  Order::iterator firstWaiting_;  // no waiting folders stand before it
  Order::iterator head_;          // the part being consumed, the first of the list; set by the consumer alone
  std::size_t takenCount_ = 1;
  std::size_t heldBytes_ = 0;
  unsigned idleReaders_ = 0;
  bool consumerWaits_ = false;
  bool full_ = false;
  bool stop_ = false;

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
