#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "engine/inventory/packed_files.h"
#include "engine/inventory/path_tree.h"
#include "engine/scan/read_ahead.h"

namespace dunmere {
namespace {

using ScanResult = DiskSweeperScan::ScanResult;

// A snapshot is due after every so many files, and after so much time.
constexpr std::int64_t kPublishEveryFiles = 12'000;
constexpr FileSystem::Instant kPublishEvery = std::chrono::milliseconds(350);

// More than there are processors: a reader mostly waits for the disk, and several waiting at a time let the disk find a
// good order. See docs/performance.md.
constexpr unsigned kUsualReaders = 8;

SweepError scanError(const FileUrl& root, std::error_code code) {
  return {SweepAttempt::startScan, root, code, {}};
}

// Whether a root that cannot be opened is a folder all the same: then the scan finds nothing and reports read errors.
// With any other error it fails, since there is no such folder, or the process has no descriptor or memory left.
bool isUnreadable(std::error_code code) {
  constexpr std::array cannotStart = {std::errc::no_such_file_or_directory,
                                      std::errc::not_a_directory,
                                      std::errc::too_many_symbolic_link_levels,
                                      std::errc::filename_too_long,
                                      std::errc::invalid_argument,
                                      std::errc::too_many_files_open,
                                      std::errc::too_many_files_open_in_system,
                                      std::errc::not_enough_memory};
  return std::ranges::none_of(cannotStart, [code](std::errc reason) { return code == reason; });
}

/// One scan, on its own thread:
///   1. folders come in depth-first order, each with its files before the folders inside it;
///   2. a folder's files go to the tree, and their sum to the folder; when it is closed its sum goes to its parent;
///   3. after each file a snapshot may be due, in which the open folders' sums count what lies below them so far.
/// So each file counts in every folder from its parent up to the root and in nothing above. No path is built or
/// compared for that, so no name can end the climb early or take it past the root, whatever its bytes.
class ProgressiveScan {
 public:
  ProgressiveScan(FileSystem& fileSystem, const FileUrl& root, const DiskSweeperScan::UpdateCallback& onUpdate)
      : fileSystem_(fileSystem), onUpdate_(onUpdate), inventory_(SweepInventory::emptyFor(root)) {}

  ScanResult run(unsigned readers) {
    auto root = fileSystem_.openFolder(inventory_.root, EntryDetail::sizes);
    lastPublication_ = fileSystem_.now();
    if (root) {
      countTree(std::move(*root), readers);
    } else {
      if (!isUnreadable(root.error().code)) return std::unexpected(scanError(inventory_.root, root.error().code));
      inventory_.hadReadErrors = true;
    }
    inventory_.scanComplete = true;
    publish();
    return inventory_;
  }

 private:
  void countTree(std::shared_ptr<OpenFolder> root, unsigned readers) {
    ReadAhead readAhead(fileSystem_, std::move(root), readers);
    while (const auto folder = readAhead.nextFolder()) {
      closeFolders(folder->depth);
      tree_.openFolder(folder->depth == 0 ? inventory_.rootPath : folder->name);
      while (const auto files = readAhead.nextFiles()) countFiles(*files);
      if (readAhead.failed()) inventory_.hadReadErrors = true;
    }
    closeFolders(0);
  }

  void closeFolders(std::size_t depth) {
    while (tree_.depth() > depth) tree_.closeFolder();
  }

  // Hands the files to the tree at once, or in portions where a snapshot is due.
  void countFiles(std::string_view packed) {
    const char* const end = packed.data() + packed.size();
    for (const char* start = packed.data(); start != end;) {
      const char* position = start;
      std::int64_t count = 0;
      std::int64_t bytes = 0;
      bool due = false;
      while (position != end && !due) {
        bytes = addBytes(bytes, takePackedFile(position).bytes);
        due = isPublicationDue(inventory_.fileCount + ++count);
      }
      tree_.addFiles(std::string_view(start, position), count, bytes);
      inventory_.fileCount += count;
      inventory_.totalFileBytes = addBytes(inventory_.totalFileBytes, bytes);
      if (due) publish();
      start = position;
    }
  }

  // Asks the clock after each file, so that a giant folder shows progress too.
  bool isPublicationDue(std::int64_t fileCount) {
    const FileSystem::Instant now = fileSystem_.now();
    if (fileCount % kPublishEveryFiles != 0 && now - lastPublication_ < kPublishEvery) return false;
    lastPublication_ = now;
    return true;
  }

  void publish() {
    inventory_.pathBytes = tree_.snapshot();
    onUpdate_(inventory_);
  }

  FileSystem& fileSystem_;
  const DiskSweeperScan::UpdateCallback& onUpdate_;
  SweepInventory inventory_;  // as of the last file
  PathTreeWriter tree_;
  FileSystem::Instant lastPublication_{};
};

// What the scan's thread owns.
struct ScanJob {
  FileSystem& fileSystem;
  const FileUrl root;
  DiskSweeperScan::UpdateCallback onUpdate;
  const ScanOptions options;
  std::promise<ScanResult> promise;
  SweepError noMemory =
      scanError(root, std::make_error_code(std::errc::not_enough_memory));  // made while there still is some
};

ScanResult scan(ScanJob& job) {
  job.fileSystem.enterUtilityPriority();
  try {
    ProgressiveScan progressiveScan(job.fileSystem, job.root, job.onUpdate);
    return progressiveScan.run(job.options.readers.value_or(kUsualReaders));
  } catch (const std::bad_alloc&) {
    return std::unexpected(std::move(job.noMemory));
  }
}

// The promise is kept last: whoever waits for it may then destroy everything that the scan uses.
void runJob(ScanJob& job) {
  try {
    ScanResult result = scan(job);
    job.onUpdate = nullptr;
    job.promise.set_value(std::move(result));
  } catch (...) {
    job.onUpdate = nullptr;
    job.promise.set_exception(std::current_exception());
  }
}

}  // namespace

std::future<DiskSweeperScan::ScanResult> DiskSweeperScan::runProgressiveScan(FileSystem& fileSystem, FileUrl under,
                                                                             UpdateCallback onUpdate,
                                                                             ScanOptions options) {
  const auto job = std::make_shared<ScanJob>(fileSystem, std::move(under), std::move(onUpdate), options);
  std::future<ScanResult> result = job->promise.get_future();
  try {
    std::thread([job] { runJob(*job); }).detach();
  } catch (const std::system_error&) {
    job->promise.set_value(
        std::unexpected(scanError(job->root, std::make_error_code(std::errc::resource_unavailable_try_again))));
  }
  return result;
}

}  // namespace dunmere
