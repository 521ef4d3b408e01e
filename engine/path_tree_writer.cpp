#include "engine/path_tree_writer.h"

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
  char* const room = makeRoom(record.size());
  std::memcpy(room, record.data(), record.size());
  tree_->folders.provide(marks_.folderCount);
  openPath_.push_back({marks_.folderCount, 0, marks_.fileCount});
  tree_->folders[marks_.folderCount++].start = marks_.textEnd;
  marks_.textEnd += record.size();
}

void PathTreeWriter::addFiles(std::string_view packed, std::int64_t count, std::int64_t bytes) {
  addRecords(packed);
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

void PathTreeWriter::addRecords(std::string_view packed) {
  // Mostly all records go at once; where a segment ends, one by one, so that none is torn in two.
  const bool fits = packed.size() <= tree_->text.segmentEnd(marks_.textEnd) - marks_.textEnd;
  const char* const end = packed.data() + packed.size();
  for (const char* position = packed.data(); position != end;) {
    const char* const start = position;
    if (fits)
      position = end;
    else
      takePackedFile(position);
    const auto length = static_cast<std::size_t>(position - start);
    std::memcpy(makeRoom(length), start, length);
    marks_.textEnd += length;
  }
}

/// Moves the end of the text to where `length` bytes lie side by side, and returns that place.
char* PathTreeWriter::makeRoom(std::size_t length) {
  PathTree& tree = *tree_;
  tree.text.provide(marks_.textEnd);
  while (tree.text.segmentEnd(marks_.textEnd) - marks_.textEnd < length) {
    tree.text[marks_.textEnd] = 0;
    marks_.textEnd = tree.text.segmentEnd(marks_.textEnd);
    tree.text.provide(marks_.textEnd);
  }
  return &tree.text[marks_.textEnd];
}

}  // namespace dunmere
