#include "engine/path_bytes.h"

#include <algorithm>
#include <vector>

#include "engine/path_tree.h"

namespace dunmere {

namespace {

using Place = PathTreeSnapshot::Place;

// The folder that `path` leads to from `folder`.
std::optional<Place> descend(const PathTreeSnapshot& tree, std::optional<Place> folder, std::string_view path) {
  for (std::size_t start = 0; folder && start <= path.size();) {
    const std::size_t slash = std::min(path.find('/', start), path.size());
    folder = tree.childNamed(*folder, path.substr(start, slash - start));
    start = slash + 1;
  }
  return folder;
}

std::optional<std::int64_t> fileNamed(const PathTreeSnapshot& tree, const Place& folder, std::string_view name) {
  for (PathTreeFiles files = tree.files(folder); !files.atEnd();) {
    const PackedFile file = files.take();
    if (file.name == name) return file.bytes;
  }
  return std::nullopt;
}

// The key of each entry in one string that grows and shrinks on the way down and up.
class KeyPath {
 public:
  void enter(std::string_view name, PathTree::FolderIndex folder, PathTree::FolderIndex subtreeEnd) {
    while (!levels_.empty() && levels_.back().subtreeEnd <= folder) levels_.pop_back();
    ofChild(name);
    levels_.push_back({key_.size(), subtreeEnd});
  }

  // The key of the entry `name` in the folder that was entered last.
  std::string_view ofChild(std::string_view name) {
    key_.resize(levels_.empty() ? 0 : levels_.back().length);
    if (!levels_.empty() && !key_.ends_with('/')) key_ += '/';
    return key_ += name;
  }

  std::string_view ofFolder() const { return key_; }

 private:
  struct Level {
    std::size_t length;
    PathTree::FolderIndex subtreeEnd;
  };
  std::string key_;
  std::vector<Level> levels_;
};

}  // namespace

std::optional<std::int64_t> PathBytes::find(std::string_view key) const {
  if (empty()) return std::nullopt;
  const PathTreeSnapshot& tree = *snapshot_;
  const Place root = *tree.root();
  if (key == tree.name(root)) return tree.bytes(root);
  const auto path = tree.pathBelowRoot(key);
  if (!path) return std::nullopt;
  const std::size_t slash = path->rfind('/');
  const bool isChildOfRoot = slash == std::string_view::npos;
  const auto parent = isChildOfRoot ? root : descend(tree, root, path->substr(0, slash));
  if (!parent) return std::nullopt;
  const std::string_view name = isChildOfRoot ? *path : path->substr(slash + 1);
  if (const auto folder = tree.childNamed(*parent, name)) return tree.bytes(*folder);
  return fileNamed(tree, *parent, name);
}

std::int64_t PathBytes::size() const {
  return snapshot_ ? snapshot_->entryCount() : 0;
}

void PathBytes::forEach(const std::function<void(std::string_view, std::int64_t)>& visit) const {
  if (empty()) return;
  const PathTreeSnapshot& tree = *snapshot_;
  KeyPath path;
  for (auto folder = tree.root(); folder; folder = tree.following(*folder)) {
    path.enter(tree.name(*folder), folder->index, tree.subtreeEnd(*folder));
    visit(path.ofFolder(), tree.bytes(*folder));
    for (PathTreeFiles files = tree.files(*folder); !files.atEnd();) {
      const PackedFile file = files.take();
      visit(path.ofChild(file.name), file.bytes);
    }
  }
}

}  // namespace dunmere
