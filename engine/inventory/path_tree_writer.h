// PathTreeWriter: builds the tree of counted paths while a scan goes through the folders.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "engine/inventory/path_bytes.h"
#include "engine/inventory/path_tree.h"

namespace dunmere {

/// The sum of two byte counts that are not negative; the largest count where it would overflow, since a file system may
/// report any size.
std::int64_t addBytes(std::int64_t a, std::int64_t b);

/// One thread. Everything may throw std::bad_alloc, after which the writer must not be used any more.
class PathTreeWriter {
 public:
  PathTreeWriter() : tree_(std::make_shared<PathTree>()) {}

  /// Opens a folder inside the one that was opened last; the first one is the root, named by its key.
  void openFolder(std::string_view name);

  /// Adds files to the folder that was opened last, before any folder inside it is opened: `packed` holds `count`
  /// packed records that are `bytes` in sum.
  /// A name that a directory read gave twice, as some file systems do when the folder is changed meanwhile, makes two
  /// entries, of which look-ups find one.
  void addFiles(std::string_view packed, std::int64_t count, std::int64_t bytes);

  /// Closes the folder that was opened last and adds its sum to its parent. A folder below which nothing was counted
  /// leaves no trace.
  void closeFolder();

  /// Number of folders that are open.
  std::size_t depth() const { return openPath_.size(); }

  /// What has been counted so far. Every open folder must hold a counted file by now; so it is right after a file was
  /// added and when all folders are closed. Costs the depth of the open folder.
  PathBytes snapshot() const;

 private:
  struct Open {
    PathTree::FolderIndex index;
    std::int64_t bytes;            // of its files and closed folders
    std::int64_t fileCountBefore;  // of the whole tree when it was opened
  };

  PathTree::TextIndex addText(std::string_view records);

  std::shared_ptr<PathTree> tree_;
  PathTreeSnapshot::Marks marks_;
  std::vector<Open> openPath_;
};

}  // namespace dunmere
