// ReadAhead: hands the folders of a tree to one consumer in depth-first order while other threads read the next ones.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
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
#include "engine/folder_reading.h"

namespace dunmere {

/// The order of consumption is one list. It starts with the folder being consumed; behind every folder that has been
/// read stand its sub-folders, in directory order, and they in turn come before its siblings. A folder is either
/// *taken* (some thread reads it or has read it) or still one of the *waiting* sub-folders of a folder that was read. A
/// reader takes the first waiting folder of the list; so does the consumer when it gets to one that nobody took, and as
/// long as it would otherwise have to wait for one that a reader is in. Whole folders change hands, giant ones batch by
/// batch.
///
/// What the consumer gets does not depend on the number of readers. With none it reads everything itself. What is held
/// in memory is bounded: at the bound nothing more is read ahead until half of it has been consumed. Only the folder
/// being consumed is always read on, as far as the consumer has taken what there was, or the two would wait for each
/// other.
///
/// One thread makes, uses and destroys it; destruction waits for the readers, each of which finishes at most the one
/// system call that it is in.
class ReadAhead {
 public:
  /// One folder as the consumer meets it. Packages and links are never met.
  struct Folder {
    std::string_view name;  ///< empty for the root; valid until the next nextFolder()
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
  struct TakenFolder {
    std::string name;
    std::size_t depth = 0;
    bool readByConsumer = false;
    bool beforeFirstWaiting = true;  // kept up to date for those before it; for others when they come to stand there
    bool finished = false;
    bool failed = false;
    std::exception_ptr fault;
    std::string files;          // packed records that were read and not yet consumed
    std::size_t heldBytes = 0;  // its share of heldBytes_, which counts what was read and not yet consumed
  };

  struct WaitingFolders {
    std::shared_ptr<OpenFolder> parent;  // kept only until the last of them is opened
    FolderNames names;
    std::size_t depth = 0;
  };

  using Order = std::list<std::variant<TakenFolder, WaitingFolders>>;
  using Lock = std::unique_lock<std::mutex>;

  // A folder that its taker may read now.
  struct Claim {
    Order::iterator place;
    std::shared_ptr<OpenFolder> parent;
    Order emptied;  // the waiting folders, when this was the last of them: destroyed without the lock
  };

  static TakenFolder& takenAt(Order::iterator place) { return std::get<TakenFolder>(*place); }
  static Order subfoldersOf(FolderReading& reading, std::size_t depth);

  // Under the lock.
  Order::iterator firstWaiting();
  Claim claim(Order::iterator waiting);
  void hold(TakenFolder& folder, std::string& files, std::size_t nameBytes);
  void end(Order::iterator place, Order& subfolders, bool failed);
  void updateFull();
  // Readers.
  void startReaders(unsigned readers);
  void readAsThread();
  bool waitForWork(Lock& lock);
  void readClaimed(Claim claimed, FolderReading& reading);
  static void begin(Claim& claimed, FolderReading& reading);
  void finish(Order::iterator place, FolderReading& reading, std::string& files, std::size_t nameBytes, bool failed);
  bool handOver(Order::iterator place, std::string& files, std::size_t nameBytes);
  void fail(Order::iterator place, std::exception_ptr fault) noexcept;

  // The consumer.
  bool advance();
  std::optional<std::string_view> readFiles();
  std::optional<std::string_view> takeHandedOver();
  void waitForHead(Lock& lock);
  bool mayReadAhead();
  void readOneAhead(Claim claimed);

  FileSystem& fileSystem_;

  std::mutex mutex_;
  std::condition_variable workCame_;      // a reader without a folder may take one
  std::condition_variable roomCame_;      // a reader inside a folder may go on
  std::condition_variable headAdvanced_;  // the consumer gets files, or the end, of its folder
  Order order_;
  Order::iterator firstWaiting_;  // no waiting folders stand before it
  Order::iterator head_;          // the folder being consumed, the first of the list; set by the consumer alone
  std::size_t takenCount_ = 1;
  std::size_t heldBytes_ = 0;
  unsigned idleReaders_ = 0;
  unsigned stoppedReaders_ = 0;
  bool full_ = false;
  std::atomic<bool> stop_ = false;  // also looked at without the lock

  // The consumer's own.
  std::shared_ptr<OpenFolder> root_;  // until it is read
  FolderReading reading_;             // of a folder that nobody read ahead
  FolderReading ahead_;               // of a folder that the consumer reads ahead itself
  Order::iterator begunAhead_;        // the giant folder that ahead_ has begun, if any
  std::string handedOver_;
  bool failed_ = false;

  std::vector<std::thread> readers_;
};

}  // namespace dunmere
