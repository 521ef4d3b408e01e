// PathTree: where a scan keeps what it has counted; PathTreeWriter, which builds it; PathTreeSnapshot, a reader's view
// of it at one moment.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/inventory/append_only_store.h"
#include "engine/inventory/packed_files.h"
#include "engine/inventory/path_bytes.h"

namespace dunmere {

/// Folders stand in depth-first order, each before what it holds; the text holds, in the same order, one record for a
/// folder's name (of size 0) followed by the records of its files. So a folder's first child folder is the next one,
/// the next sibling is where a subtree ends, and a folder's files end where the next folder's text starts.
/// Only folders with at least one counted file at or below them are kept. Written by one thread (PathTreeWriter); read
/// by others through snapshots, below the marks that these hold.
struct PathTree {
  using FolderIndex = std::uint32_t;
  using TextIndex = std::uint64_t;

  struct Folder {
    TextIndex start;         ///< the record of its name; fixed when the folder is opened
    std::int64_t bytes;      ///< sum of all counted files below; set when the folder is closed
    FolderIndex subtreeEnd;  ///< the first folder behind all that it holds; set when the folder is closed
  };

  // A record lies in one segment; a zero byte in place of a record says that the next segment goes on.
  AppendOnlyStore<char, 16, 32> text;
  AppendOnlyStore<Folder, 10, 22> folders;
  static_assert(decltype(folders)::kCapacity <= UINT32_MAX);
};

/// The files of one folder, one after the other.
class PathTreeFiles {
 public:
  using TextIndex = PathTree::TextIndex;

  PathTreeFiles(const PathTree& tree, TextIndex begin, TextIndex end) : tree_(&tree), position_(begin), end_(end) {}

  /// None at the end.
  std::optional<PackedFile> next();

 private:
  const PathTree* tree_;
  TextIndex position_;
  TextIndex end_;
};

/// What had been counted when it was taken. Immutable; all functions may be called on any thread, while the writer goes
/// on. Folders are named by their index, which is below folderCount().
class PathTreeSnapshot {
 public:
  using FolderIndex = PathTree::FolderIndex;

  /// The scan root, if anything was counted.
  static constexpr FolderIndex kRoot = 0;

  struct OpenFolder {
    FolderIndex index = 0;
    std::int64_t bytes = 0;
  };

  struct Marks {
    FolderIndex folderCount = 0;
    PathTree::TextIndex textEnd = 0;
    std::int64_t fileCount = 0;
  };

  /// `openPath` lists the folders that are still being counted, from the root down. Their sums are kept here, those of
  /// all others in the tree.
  PathTreeSnapshot(std::shared_ptr<const PathTree> tree, const Marks& marks, std::vector<OpenFolder> openPath)
      : tree_(std::move(tree)), marks_(marks), openPath_(std::move(openPath)) {}

  FolderIndex folderCount() const { return marks_.folderCount; }
  std::int64_t entryCount() const { return marks_.fileCount + marks_.folderCount; }

  /// The name of a folder; of the root its whole key.
  std::string_view name(FolderIndex folder) const;
  std::int64_t bytes(FolderIndex folder) const;
  /// The first folder behind all that `folder` holds. Its child folders are `folder` + 1, where that one's subtree
  /// ends, and so on up to here.
  FolderIndex subtreeEnd(FolderIndex folder) const;
  PathTreeFiles files(FolderIndex folder) const;

  /// Costs a walk over the child folders of `parent`.
  std::optional<FolderIndex> childFolder(FolderIndex parent, std::string_view name) const;

 private:
  const OpenFolder* openFolder(FolderIndex folder) const;

  std::shared_ptr<const PathTree> tree_;
  Marks marks_;
  std::vector<OpenFolder> openPath_;
};

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
