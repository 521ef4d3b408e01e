#include "engine/inventory/path_tree.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

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

std::int64_t addBytes(std::int64_t a, std::int64_t b) {
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  return a > largest - b ? largest : a + b;
}

void PathTreeWriter::openFolder(std::string_view name) {
  std::string record;
  appendPackedFile(record, name, 0);
  const PathTree::TextIndex start = addText(record);
  tree_->folders.provide(marks_.folderCount);
  openPath_.push_back({marks_.folderCount, 0, marks_.fileCount});
  tree_->folders[marks_.folderCount++].start = start;
}

void PathTreeWriter::addFiles(std::string_view packed, std::int64_t count, std::int64_t bytes) {
  addText(packed);
  marks_.fileCount += count;
  openPath_.back().bytes = addBytes(openPath_.back().bytes, bytes);
}

void PathTreeWriter::closeFolder() {
  const Open closed = openPath_.back();
  openPath_.pop_back();
  PathTree::Folder& folder = tree_->folders[closed.index];
  if (marks_.fileCount == closed.fileCountBefore) {
    // No snapshot was taken since this folder was opened (one follows a counted file), so none can see it go.
    marks_.folderCount = closed.index;
    marks_.textEnd = folder.start;
    return;
  }
  folder.bytes = closed.bytes;
  folder.subtreeEnd = marks_.folderCount;
  if (!openPath_.empty()) openPath_.back().bytes = addBytes(openPath_.back().bytes, closed.bytes);
}

PathBytes PathTreeWriter::snapshot() const {
  std::vector<PathTreeSnapshot::OpenFolder> openPath(openPath_.size());
  std::int64_t below = 0;
  for (std::size_t depth = openPath_.size(); depth-- > 0;) {
    below = addBytes(below, openPath_[depth].bytes);
    openPath[depth] = {openPath_[depth].index, below};
  }
  return PathBytes(std::make_shared<PathTreeSnapshot>(tree_, marks_, std::move(openPath)));
}

/// Adds records side by side and returns where they start. Where they do not fit into a segment they all go to the next
/// one that they fit into; what is left free of a segment was never touched and takes no memory.
PathTree::TextIndex PathTreeWriter::addText(std::string_view records) {
  auto& text = tree_->text;
  text.provide(marks_.textEnd);
  while (text.segmentEnd(marks_.textEnd) - marks_.textEnd < records.size()) {
    text[marks_.textEnd] = 0;
    marks_.textEnd = text.segmentEnd(marks_.textEnd);
    text.provide(marks_.textEnd);
  }
  const PathTree::TextIndex start = marks_.textEnd;
  std::memcpy(&text[start], records.data(), records.size());
  marks_.textEnd += records.size();
  return start;
}

}  // namespace dunmere
