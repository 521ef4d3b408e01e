// FolderReading: reads one folder after another, and keeps of each what a scan needs: packed files and sub-folders, but
// for packages.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/file_system.h"

namespace dunmere {

/// Whether a folder of this name is a package on any system: a program or plug-in, one thing to people, whose bytes are
/// not counted. A folder that holds a person's data is one only where the system shows it so
/// (EntryAttributes::isPackage). For folders only: files and links are never packages.
bool isPackageName(std::string_view name);

/// Names of folders, side by side, each ended by a slash (which no name holds). Memory is given back while names are
/// taken, since one folder may hold a million others.
class FolderNames {
 public:
  /// Appends the names of one chunk.
  void add(std::string names);
  bool empty() const { return chunk_ == chunks_.size(); }
  /// Length in bytes of all names that were added.
  std::size_t bytes() const { return bytes_; }
  /// The next name, which must be there; in the order in which they were added.
  std::string take();

 private:
  std::vector<std::string> chunks_;  // none of them is empty, but for those taken
  std::size_t bytes_ = 0;
  std::size_t chunk_ = 0;
  std::size_t offset_ = 0;
};

/// What is left of a folder after one of its chunks.
struct FolderRest {
  std::shared_ptr<OpenFolder> folder;
  EntryBatch next;         ///< entries that were read and not yet measured; not empty
  FolderNames subfolders;  ///< of all chunks before

  /// Memory that it takes, in bytes.
  std::size_t heldBytes() const { return next.heldBytes() + subfolders.bytes(); }
};

/// Reads folders in chunks of one batch. Finding out the sizes takes most of the time: as soon as the names of a chunk
/// and of the next one are read, the rest of the folder may be given to another thread. Keeps its buffers from folder
/// to folder. One thread.
class FolderReading {
 public:
  /// Begins an open folder.
  void begin(std::shared_ptr<OpenFolder> folder);
  /// Begins a folder inside an open one.
  void begin(OpenFolder& parent, std::string_view name);
  /// Goes on with a folder.
  void begin(FolderRest rest);

  /// Reads what comes after this chunk; once, after begin(). If anything does, takeRest() must follow.
  bool readOn();
  FolderRest takeRest();
  /// Finds out the sizes of this chunk's files; once, after readOn().
  void measure();

  /// The packed records of this chunk's regular files; complete after measure().
  std::string_view files() const { return files_; }
  /// The folders found in this folder, packages left out; complete after its last chunk, the one without a rest.
  FolderNames takeSubfolders() { return std::exchange(subfolders_, {}); }
  std::shared_ptr<OpenFolder> takeFolder() { return std::exchange(folder_, nullptr); }
  /// Whether the folder could not be opened, or not be read to its end, and may hide something that takes disk space.
  bool failed() const { return failed_; }

 private:
  void read(EntryBatch& batch);
  void fail(OpenFolder& where);
  void keepSubfolders();
  void keepFiles();

  std::shared_ptr<OpenFolder> folder_;
  FolderNames subfolders_;
  EntryBatch chunk_;
  EntryBatch next_;
  std::string files_;
  bool failed_ = false;
};

}  // namespace dunmere
