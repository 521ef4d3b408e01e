#include "engine/inventory/counted_children.h"

#include <algorithm>
#include <utility>

#include "engine/file_url.h"

namespace dunmere {

bool CountedChildren::continues(const SweepInventory& inventory) const {
  return snapshot_ && inventory.pathBytes.snapshot() && inventory.pathBytes.snapshot()->isNotBefore(*snapshot_);
}

void CountedChildren::follow(const SweepInventory& inventory, const Tell& tell) {
  if (!continues(inventory)) begin(inventory);
  snapshot_ = inventory.pathBytes.snapshot();
  if (inventory.pathBytes.empty()) return;
  const PathTreeSnapshot& tree = *snapshot_;
  if (root_) tell(*root_, true, tree.bytes(*tree.root()));
  if (!reachFolder(tree)) return;
  const Place folder = tree.placeOf(reached_);
  tellFiles(tree, folder, tell);
  tellFolders(tree, folder, tell);
}

void CountedChildren::begin(const SweepInventory& inventory) {
  root_.reset();
  way_.reset();
  reached_ = 0;
  nextFile_.reset();
  lastFolder_.reset();
  if (inventory.pathBytes.empty()) return;
  const FileUrl root(inventory.rootPath);
  if (folder_ == inventory.rootPath) {
    way_.emplace();
  } else if (const auto below = inventory.pathBytes.snapshot()->pathBelowRoot(folder_)) {
    way_ = *below;
  } else if (folder_ == root.deletingLastPathComponent().key()) {
    root_ = root.lastPathComponent();
  }
}

/// Goes on along the way, from where the last snapshot ended it. Whether the folder has an entry.
bool CountedChildren::reachFolder(const PathTreeSnapshot& tree) {
  while (way_ && !way_->empty()) {
    const std::size_t slash = std::min(way_->find('/'), way_->size());
    const auto child = search(tree, std::string_view(*way_).substr(0, slash));
    if (!child) return false;
    reached_ = child->index;
    lastFolder_.reset();
    way_->erase(0, slash + 1);
  }
  return way_.has_value();
}

/// The child `name` of the folder reached, among those that were not looked at before.
std::optional<CountedChildren::Place> CountedChildren::search(const PathTreeSnapshot& tree, std::string_view name) {
  const Place parent = tree.placeOf(reached_);
  auto child = lastFolder_ ? tree.nextChild(parent, tree.placeOf(*lastFolder_)) : tree.firstChild(parent);
  for (; child; child = tree.nextChild(parent, *child)) {
    if (tree.name(*child) == name) return child;
    lastFolder_ = child->index;
  }
  return std::nullopt;
}

void CountedChildren::tellFiles(const PathTreeSnapshot& tree, const Place& folder, const Tell& tell) {
  PathTreeFiles files = tree.files(folder);
  if (nextFile_) files.moveTo(*nextFile_);
  while (!files.atEnd()) {
    const PackedFile file = files.take();
    tell(file.name, false, file.bytes);
  }
  nextFile_ = files.position();
}

/// The folder told last may have grown; those before it were closed by then.
void CountedChildren::tellFolders(const PathTreeSnapshot& tree, const Place& folder, const Tell& tell) {
  auto child = lastFolder_ ? std::optional(tree.placeOf(*lastFolder_)) : tree.firstChild(folder);
  for (; child; child = tree.nextChild(folder, *child)) {
    tell(tree.name(*child), true, tree.bytes(*child));
    lastFolder_ = child->index;
  }
}

}  // namespace dunmere
