// FolderChildren: finds the counted children of one folder by name, fastest in the order of the scan.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/path_tree.h"

namespace dunmere {

/// Follows the questions with two cursors, one over the files and one over the child folders. The first name that is
/// under neither makes it build a table of all children, which answers from then on what the cursors cannot. One
/// thread.
class FolderChildren {
 public:
  FolderChildren(std::shared_ptr<const PathTreeSnapshot> tree, const PathTreeSnapshot::Place& folder);

  /// The bytes of the child `name`; none when it was not counted.
  std::optional<std::int64_t> bytesOf(std::string_view name);

  /// The child folder `name`; none when nothing below it was counted.
  std::optional<PathTreeSnapshot::Place> folderNamed(std::string_view name);

 private:
  using Place = PathTreeSnapshot::Place;

  // One child in one number, so that the table of a giant folder stays small.
  struct Child {
    std::uint64_t code = 0;  // 0: none; else a folder's index or the place of a file's record

    static Child file(PathTree::TextIndex record) { return {record << 1 | 1}; }
    static Child folder(PathTree::FolderIndex index) { return {std::uint64_t{index} << 1}; }
    bool exists() const { return code != 0; }
    bool isFile() const { return (code & 1) != 0; }
    std::uint64_t number() const { return code >> 1; }
  };

  std::optional<std::int64_t> underCursor(std::string_view name);
  std::optional<std::int64_t> inTable(std::string_view name);
  void buildTable();
  std::size_t countChildren() const;
  Child& slotFor(std::string_view name);
  std::string_view nameOf(Child child) const;

  std::shared_ptr<const PathTreeSnapshot> tree_;
  Place folder_;
  PathTreeFiles nextFile_;
  std::optional<Place> nextFolder_;
  std::vector<Child> table_;  // open addressing, at most half full; empty until it is needed
};

}  // namespace dunmere
