// FolderReading: reads one folder after another, and keeps of each what a scan needs: packed files and sub-folders.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/file_system.h"

namespace dunmere {

/// Names of folders, side by side, each ended by a slash (which no name holds). What has been taken is given back
/// piece by piece, since one folder may hold a million others.
class FolderNames {
 public:
  void add(std::string piece) { pieces_.push_back(std::move(piece)); }
  bool empty() const { return piece_ == pieces_.size(); }
  /// The next name, which must be there; in the order in which they were added.
  std::string take();

 private:
  std::vector<std::string> pieces_;  // none of them is empty, but for those taken
  std::size_t piece_ = 0;
  std::size_t offset_ = 0;
};

/// Reads folders batch by batch. Keeps its buffers from folder to folder. One thread.
class FolderReading {
 public:
  /// Begins an open folder.
  void begin(std::shared_ptr<OpenFolder> folder);
  /// Begins a folder inside an open one; when that fails, so will the first readBatch().
  void begin(OpenFolder& parent, std::string_view name);

  enum class Progress { more, ended, failed };
  /// Reads the next entries. After `more`, files() and the sub-folders grew by what was read.
  Progress readBatch();

  /// The packed records of the regular files of the batch read last.
  std::string_view files() const { return files_; }
  /// Length of the names of the sub-folders of the batch read last.
  std::size_t folderNameBytes() const { return folderNames_.size(); }

  /// The folders found so far, packages left out.
  FolderNames takeSubfolders() { return std::exchange(subfolders_, {}); }
  std::shared_ptr<OpenFolder> takeFolder() { return std::exchange(folder_, nullptr); }

 private:
  void keepEntries();

  std::shared_ptr<OpenFolder> folder_;
  FolderNames subfolders_;
  EntryBatch batch_;
  std::string files_;
  std::string folderNames_;
};

}  // namespace dunmere
