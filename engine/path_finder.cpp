#include "engine/path_finder.h"

#include "engine/path_tree.h"

namespace dunmere {

std::optional<std::int64_t> PathFinder::find(std::string_view key) {
  if (!tree_ || tree_->entryCount() == 0) return std::nullopt;
  const PathTreeSnapshot::Place root = *tree_->root();
  if (key == tree_->name(root)) return tree_->bytes(root);
  auto path = tree_->pathBelowRoot(key);
  if (!path) return std::nullopt;
  if (levels_.empty()) levels_.push_back({"", FolderChildren(tree_, root)});

  std::size_t depth = 0;
  for (std::size_t slash; (slash = path->find('/')) != std::string_view::npos; path->remove_prefix(slash + 1)) {
    if (!enter(++depth, path->substr(0, slash))) return std::nullopt;
  }
  return levels_[depth].children.bytesOf(*path);
}

/// Makes the folder `name` inside the level above `depth` the level at `depth`; false when there is none.
bool PathFinder::enter(std::size_t depth, std::string_view name) {
  if (depth < levels_.size() && levels_[depth].name == name) return true;
  levels_.erase(levels_.begin() + static_cast<std::ptrdiff_t>(depth), levels_.end());
  const auto folder = levels_.back().children.folderNamed(name);
  if (folder) levels_.push_back({std::string(name), FolderChildren(tree_, *folder)});
  return folder.has_value();
}

}  // namespace dunmere
