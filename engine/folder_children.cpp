#include "engine/folder_children.h"

#include <bit>
#include <functional>

namespace dunmere {

FolderChildren::FolderChildren(std::shared_ptr<const PathTreeSnapshot> tree, const PathTreeSnapshot::Place& folder)
    : tree_(std::move(tree)),
      folder_(folder),
      nextFile_(tree_->files(folder)),
      nextFolder_(tree_->firstChild(folder)) {}

std::optional<std::int64_t> FolderChildren::bytesOf(std::string_view name) {
  if (const auto bytes = underCursor(name)) return bytes;
  return inTable(name);
}

std::optional<PathTreeSnapshot::Place> FolderChildren::folderNamed(std::string_view name) {
  if (nextFolder_ && tree_->name(*nextFolder_) == name) return nextFolder_;
  if (table_.empty()) buildTable();
  const Child child = slotFor(name);
  if (!child.exists() || child.isFile()) return std::nullopt;
  return tree_->placeOf(static_cast<PathTree::FolderIndex>(child.number()));
}

std::optional<std::int64_t> FolderChildren::underCursor(std::string_view name) {
  if (!nextFile_.atEnd()) {
    PathTreeFiles file = nextFile_;
    const PackedFile next = file.take();
    if (next.name == name) {
      nextFile_ = file;
      return next.bytes;
    }
  }
  if (!nextFolder_ || tree_->name(*nextFolder_) != name) return std::nullopt;
  const std::int64_t bytes = tree_->bytes(*nextFolder_);
  nextFolder_ = tree_->nextChild(folder_, *nextFolder_);
  return bytes;
}

// Leaves the cursor behind the child that was found, since the next question is most likely for the one after it.
std::optional<std::int64_t> FolderChildren::inTable(std::string_view name) {
  if (table_.empty()) buildTable();
  const Child child = slotFor(name);
  if (!child.exists()) return std::nullopt;
  if (child.isFile()) {
    nextFile_.moveTo(child.number());
    return nextFile_.take().bytes;
  }
  const Place folder = tree_->placeOf(static_cast<PathTree::FolderIndex>(child.number()));
  nextFolder_ = tree_->nextChild(folder_, folder);
  return tree_->bytes(folder);
}

void FolderChildren::buildTable() {
  table_.resize(std::bit_ceil(2 * countChildren() + 1));
  for (PathTreeFiles files = tree_->files(folder_); !files.atEnd();) {
    const PathTree::TextIndex record = files.position();
    slotFor(files.take().name) = Child::file(record);
  }
  for (auto folder = tree_->firstChild(folder_); folder; folder = tree_->nextChild(folder_, *folder))
    slotFor(tree_->name(*folder)) = Child::folder(folder->index);
}

std::size_t FolderChildren::countChildren() const {
  std::size_t count = 0;
  for (PathTreeFiles files = tree_->files(folder_); !files.atEnd(); files.take()) ++count;
  for (auto folder = tree_->firstChild(folder_); folder; folder = tree_->nextChild(folder_, *folder)) ++count;
  return count;
}

/// The slot that holds the child `name`, or the empty one where it would be.
FolderChildren::Child& FolderChildren::slotFor(std::string_view name) {
  const std::size_t mask = table_.size() - 1;
  std::size_t slot = std::hash<std::string_view>{}(name)&mask;
  while (table_[slot].exists() && nameOf(table_[slot]) != name) slot = (slot + 1) & mask;
  return table_[slot];
}

std::string_view FolderChildren::nameOf(Child child) const {
  if (child.isFile()) return tree_->fileAt(child.number()).name;
  return tree_->name(tree_->placeOf(static_cast<PathTree::FolderIndex>(child.number())));
}

}  // namespace dunmere
