#include "engine/inventory/path_tree.h"

#include <algorithm>

namespace dunmere {

namespace {

PackedFile recordAt(const PathTree& tree, PathTree::TextIndex& position) {
  const char* const start = &tree.text[position];
  const char* end = start;
  const PackedFile record = takePackedFile(end);
  position += static_cast<PathTree::TextIndex>(end - start);
  return record;
}

}  // namespace

PathTree::TextIndex PathTreeFiles::position() {
  while (position_ != end_ && tree_->text[position_] == 0) position_ = tree_->text.segmentEnd(position_);
  return position_;
}

PackedFile PathTreeFiles::take() {
  position();
  return recordAt(*tree_, position_);
}

std::optional<PathTreeSnapshot::Place> PathTreeSnapshot::root() const {
  if (marks_.folderCount == 0) return std::nullopt;
  return placeOf(0);
}

std::optional<PathTreeSnapshot::Place> PathTreeSnapshot::following(const Place& folder) const {
  if (folder.index + 1 == marks_.folderCount) return std::nullopt;
  return placeOf(folder.index + 1);
}

std::optional<PathTreeSnapshot::Place> PathTreeSnapshot::firstChild(const Place& parent) const {
  if (parent.index + 1 == subtreeEnd(parent)) return std::nullopt;
  return placeOf(parent.index + 1);
}

std::optional<PathTreeSnapshot::Place> PathTreeSnapshot::nextChild(const Place& parent, const Place& child) const {
  const FolderIndex next = subtreeEnd(child);
  if (next == subtreeEnd(parent)) return std::nullopt;
  return placeOf(next);
}

std::optional<std::string_view> PathTreeSnapshot::pathBelowRoot(std::string_view key) const {
  const std::string_view rootKey = name(*root());
  if (key == rootKey || !key.starts_with(rootKey)) return std::nullopt;
  key.remove_prefix(rootKey.size());
  if (rootKey.ends_with('/')) return key;
  if (!key.starts_with('/')) return std::nullopt;
  return key.substr(1);
}

std::string_view PathTreeSnapshot::name(const Place& folder) const {
  return fileAt(tree_->folders[folder.index].start).name;
}

std::int64_t PathTreeSnapshot::bytes(const Place& folder) const {
  return folder.openDepth == kClosed ? tree_->folders[folder.index].bytes : openPath_[folder.openDepth].bytes;
}

PathTree::FolderIndex PathTreeSnapshot::subtreeEnd(const Place& folder) const {
  return folder.openDepth == kClosed ? tree_->folders[folder.index].subtreeEnd : marks_.folderCount;
}

PathTreeFiles PathTreeSnapshot::files(const Place& folder) const {
  PathTree::TextIndex begin = tree_->folders[folder.index].start;
  recordAt(*tree_, begin);
  const FolderIndex next = folder.index + 1;
  return PathTreeFiles(*tree_, begin, next < marks_.folderCount ? tree_->folders[next].start : marks_.textEnd);
}

PackedFile PathTreeSnapshot::fileAt(PathTree::TextIndex position) const {
  return recordAt(*tree_, position);
}

PathTreeSnapshot::Place PathTreeSnapshot::placeOf(FolderIndex folder) const {
  const auto open = std::ranges::lower_bound(openPath_, folder, {}, &OpenFolder::index);
  if (open == openPath_.end() || open->index != folder) return {folder, kClosed};
  return {folder, static_cast<std::size_t>(open - openPath_.begin())};
}

}  // namespace dunmere
