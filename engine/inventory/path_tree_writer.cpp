#include "engine/inventory/path_tree_writer.h"

#include <cstring>
#include <limits>
#include <string>

namespace dunmere {

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
