// MemoryFileSystem: a whole file system in memory with a clock that the test steps.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/file_system.h"
#include "tests/support/memory_tree.h"

namespace dunmere::test {

/// Build the tree first, then scan it; the builder functions and the counters may also be used between two operations
/// (all functions lock). Paths are absolute; missing parents of an added entry are made. Builder functions throw
/// std::invalid_argument when the path leads nowhere or through something that is no folder.
class MemoryFileSystem : public FileSystem {
 public:
  MemoryFileSystem();
  ~MemoryFileSystem() override;

  // Building. Entries of a folder are read in the order in which they were added.
  void addFolder(const std::string& path);
  void addFile(const std::string& path, std::int64_t allocatedBytes);
  void addFile(const std::string& path, const EntryAttributes& attributes);  ///< kind is set to regularFile
  /// `target` is absolute or relative. As on a system, the link's own length is that of its target's path.
  void addLink(const std::string& path, const std::string& target);
  void addOther(const std::string& path);        ///< a FIFO, socket or device
  void markPackage(const std::string& path);     ///< EntryAttributes::isPackage of a folder
  void makeUnreadable(const std::string& path);  ///< opening this folder fails with EACCES
  void makeReadable(const std::string& path);
  void failReadingAfter(const std::string& path,
                        std::size_t entries);     ///< reading fails with EIO after so many entries
  void failMeasuring(const std::string& path);    ///< the sizes of this folder's files are out of reach, with EIO
  void takeNoDiskSpace(const std::string& path);  ///< OpenFolder::takesDiskSpace() of this folder
  void hideAttributes(const std::string& path);   ///< this entry's attributes cannot be read
  void remove(const std::string& path);           ///< with all below it
  void setBatchSize(std::size_t entries);         ///< entries a readEntries() hands out at most; default 3
  void setStamps(bool given);                     ///< whether folders tell OpenFolder::stamp(); at first not

  // Volumes. At first the list cannot be had, no volume can be measured and the home folder is "/home/user".
  void setMountedVolumes(std::optional<std::vector<FileUrl>> volumes);
  /// For this path and all below it, up to the next path with values of its own; none: reading fails.
  void setVolumeValues(const std::string& path, std::optional<VolumeValues> values);
  void setHome(const std::string& path);

  // Clock: now() returns the current value; the clock moves on by `step` after each call of now().
  void setClock(Instant now);
  void advanceClock(Instant by);
  void setClockStep(Instant step);

  // What was asked of the file system so far.
  std::vector<std::string> openedFolders() const;    ///< every openFolder()/openChild() by path, in order
  std::vector<std::string> attributeReads() const;   ///< every entry that a listing asked attributes of, by path
  std::vector<std::string> measuredVolumes() const;  ///< every volumeValues() by path, in order
  int utilityPriorityThreads() const;                ///< calls of enterUtilityPriority()

  /// Runs at each openFolder() and openChild(), before it answers, on the caller's thread, without the lock: the place
  /// to block a scan or to change the tree under it.
  void onOpen(std::function<void(const std::string& path)> hook);
  /// The same at each readEntries() once it has its entries: the place to change what was just read.
  void onRead(std::function<void(const std::string& path)> hook);
  /// The same at each measure(), before it begins.
  void onMeasure(std::function<void(const std::string& path)> hook);

  // FileSystem. nameSortKey() folds ASCII letters to lower case and leaves all else as it is.
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override;
  std::optional<std::vector<VolumeMount>> mountedVolumes() override;
  using FileSystem::volumeValues;
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override;
  FileUrl homeFolder() override;
  Instant now() override;
  std::string nameSortKey(std::string_view name) override;
  void enterUtilityPriority() noexcept override;

 private:
  class Folder;

  /// A folder that was opened by its path: from here on paths are spelled as that path was.
  struct Anchor {
    MemoryNode* node = nullptr;
    std::string path;
  };
  /// A path put down without being spelled, because spelling each one of a deep chain would take quadratic memory.
  struct LoggedPath {
    std::shared_ptr<const Anchor> anchor;
    const MemoryNode* folder = nullptr;  ///< none: the anchor's path itself
    std::string name;
  };
  using Hook = std::function<void(const std::string& path)>;

  template <typename Change>
  void changeFolder(const std::string& path, Change change);
  static std::string spell(const LoggedPath& logged);
  static std::vector<std::string> spellAll(const std::vector<LoggedPath>& log);
  void logOpening(const LoggedPath& logged);

  mutable std::mutex mutex_;  // guards everything below but the atomic
  MemoryTree tree_;
  std::size_t batchSize_ = 3;
  bool stampsGiven_ = false;
  std::optional<std::vector<FileUrl>> mountedVolumes_;
  std::map<std::string, std::optional<VolumeValues>> volumeValues_;
  FileUrl home_{"/home/user"};
  Instant clock_{0};
  Instant clockStep_{0};
  std::vector<LoggedPath> openedFolders_;
  std::vector<LoggedPath> attributeReads_;
  std::vector<std::string> measuredVolumes_;
  std::shared_ptr<const Hook> openHook_;
  std::shared_ptr<const Hook> readHook_;
  std::shared_ptr<const Hook> measureHook_;
  std::atomic<int> utilityPriorityThreads_{0};
};

}  // namespace dunmere::test
