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

std::optional<PackedFile> PathTreeFiles::next() {
  while (position_ != end_ && tree_->text[position_] == 0) position_ = tree_->text.segmentEnd(position_);
  if (position_ == end_) return std::nullopt;
  return recordAt(*tree_, position_);
}

std::string_view PathTreeSnapshot::name(FolderIndex folder) const {
  PathTree::TextIndex position = tree_->folders[folder].start;
  return recordAt(*tree_, position).name;
}

std::int64_t PathTreeSnapshot::bytes(FolderIndex folder) const {
  const OpenFolder* const open = openFolder(folder);
  return open != nullptr ? open->bytes : tree_->folders[folder].bytes;
}

PathTree::FolderIndex PathTreeSnapshot::subtreeEnd(FolderIndex folder) const {
  return openFolder(folder) != nullptr ? marks_.folderCount : tree_->folders[folder].subtreeEnd;
}

PathTreeFiles PathTreeSnapshot::files(FolderIndex folder) const {
  PathTree::TextIndex begin = tree_->folders[folder].start;
  recordAt(*tree_, begin);
  const FolderIndex next = folder + 1;
  return PathTreeFiles(*tree_, begin, next < marks_.folderCount ? tree_->folders[next].start : marks_.textEnd);
}

std::optional<PathTree::FolderIndex> PathTreeSnapshot::childFolder(FolderIndex parent, std::string_view name) const {
  const FolderIndex end = subtreeEnd(parent);
  for (FolderIndex child = parent + 1; child != end; child = subtreeEnd(child)) {
    if (this->name(child) == name) return child;
  }
  return std::nullopt;
}

const PathTreeSnapshot::OpenFolder* PathTreeSnapshot::openFolder(FolderIndex folder) const {
  const auto open = std::ranges::lower_bound(openPath_, folder, {}, &OpenFolder::index);
  return open != openPath_.end() && open->index == folder ? &*open : nullptr;
}

}  // namespace dunmere
