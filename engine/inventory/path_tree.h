// PathTree: where a scan keeps what it has counted, and PathTreeSnapshot: a reader's view of it at one moment.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/inventory/append_only_store.h"
#include "engine/inventory/packed_files.h"

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

  PathTreeFiles(const PathTree& tree, TextIndex position, TextIndex end)
      : tree_(&tree), position_(position), end_(end) {}

  /// Where the next file's record stands; the end when there is none.
  TextIndex position();
  bool atEnd() { return position() == end_; }
  /// Takes the next file, which must be there.
  PackedFile take();
  /// Goes on at the record at `position`.
  void moveTo(TextIndex position) { position_ = position; }

 private:
  const PathTree* tree_;
  TextIndex position_;
  TextIndex end_;
};

/// What had been counted when it was taken. Immutable; all functions may be called on any thread, while the writer goes
/// on. Folders that were open then have their sums here, all others in the tree.
class PathTreeSnapshot {
 public:
  using FolderIndex = PathTree::FolderIndex;

  struct OpenFolder {
    FolderIndex index = 0;
    std::int64_t bytes = 0;
  };

  /// One folder of the snapshot.
  struct Place {
    FolderIndex index = 0;
    std::size_t openDepth = kClosed;  ///< its place in the open path, kClosed when it was complete
  };
  static constexpr std::size_t kClosed = SIZE_MAX;

  struct Marks {
    FolderIndex folderCount = 0;
    PathTree::TextIndex textEnd = 0;
    std::int64_t fileCount = 0;
  };

  /// `openPath` lists the folders that are still being counted, from the root down.
  PathTreeSnapshot(std::shared_ptr<const PathTree> tree, const Marks& marks, std::vector<OpenFolder> openPath)
      : tree_(std::move(tree)), marks_(marks), openPath_(std::move(openPath)) {}

  std::int64_t entryCount() const { return marks_.fileCount + marks_.folderCount; }

  /// Whether it was taken from the same tree, then or later. Every file and folder of `earlier` then has its place
  /// here too.
  bool isNotBefore(const PathTreeSnapshot& earlier) const {
    return tree_ == earlier.tree_ && marks_.textEnd >= earlier.marks_.textEnd &&
           marks_.folderCount >= earlier.marks_.folderCount;
  }

  /// The folder of this index, which is below the mark.
  Place placeOf(FolderIndex folder) const;
  /// The scan root; none when nothing was counted.
  std::optional<Place> root() const;
  /// The folder that follows in depth-first order; none after the last.
  std::optional<Place> following(const Place& folder) const;
  /// The first child folder of `parent`.
  std::optional<Place> firstChild(const Place& parent) const;
  /// The child folder of `parent` that follows `child`.
  std::optional<Place> nextChild(const Place& parent, const Place& child) const;

  /// What of the path key `key` lies below the root, without the slash between them; none when it lies elsewhere or is
  /// the root's own. The tree is not empty.
  std::optional<std::string_view> pathBelowRoot(std::string_view key) const;

  /// The name of a folder; of the root its whole key.
  std::string_view name(const Place& folder) const;
  std::int64_t bytes(const Place& folder) const;
  /// The first folder behind all that `folder` holds.
  FolderIndex subtreeEnd(const Place& folder) const;
  PathTreeFiles files(const Place& folder) const;
  /// The file whose record stands at `position`.
  PackedFile fileAt(PathTree::TextIndex position) const;

 private:
  std::shared_ptr<const PathTree> tree_;
  Marks marks_;
  std::vector<OpenFolder> openPath_;
};

}  // namespace dunmere
