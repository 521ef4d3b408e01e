// PathFinder: looks many path keys up, one after the other, without going over the same folders again and again.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/folder_children.h"
#include "engine/path_bytes.h"

namespace dunmere {

/// Answers as PathBytes::find does. Keeps the folders on the way to the key asked last, each with its table of
/// children, so that a key that shares the beginning of its path with the one before costs only what is different.
/// Meant for the links of one column, which mostly lead into a few folders. Keeps the snapshot alive. One thread.
class PathFinder {
 public:
  explicit PathFinder(const PathBytes& pathBytes) : tree_(pathBytes.snapshot()) {}

  std::optional<std::int64_t> find(std::string_view key);

 private:
  struct Level {
    std::string name;  // empty for the root
    FolderChildren children;
  };

  bool enter(std::size_t depth, std::string_view name);

  std::shared_ptr<const PathTreeSnapshot> tree_;  // null: nothing was counted
  std::vector<Level> levels_;                     // from the root down
};

}  // namespace dunmere
