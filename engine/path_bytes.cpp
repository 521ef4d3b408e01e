#include "engine/path_bytes.h"

#include <algorithm>
#include <vector>

#include "engine/folder_children.h"
#include "engine/path_tree.h"

namespace dunmere {

namespace {

using Place = PathTreeSnapshot::Place;

// What of `key` lies below the root, without the slash between them; none when the key lies elsewhere.
std::optional<std::string_view> belowRoot(std::string_view key, std::string_view rootKey) {
  if (!key.starts_with(rootKey)) return std::nullopt;
  key.remove_prefix(rootKey.size());
  if (rootKey.ends_with('/')) return key;
  if (!key.starts_with('/')) return std::nullopt;
  return key.substr(1);
}

std::optional<Place> folderAt(const PathTreeSnapshot& tree, std::string_view key) {
  auto folder = tree.root();
  if (!folder || key == tree.name(*folder)) return folder;
  const auto path = belowRoot(key, tree.name(*folder));
  if (!path) return std::nullopt;
  for (std::size_t start = 0; folder && start <= path->size();) {
    const std::size_t slash = std::min(path->find('/', start), path->size());
    folder = tree.childNamed(*folder, path->substr(start, slash - start));
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

PathBytes::Folder::Folder() = default;
PathBytes::Folder::Folder(std::unique_ptr<FolderChildren> children) : children_(std::move(children)) {}
PathBytes::Folder::Folder(Folder&&) noexcept = default;
PathBytes::Folder& PathBytes::Folder::operator=(Folder&&) noexcept = default;
PathBytes::Folder::~Folder() = default;

std::optional<std::int64_t> PathBytes::Folder::bytesOf(std::string_view name) {
  return children_ ? children_->bytesOf(name) : std::nullopt;
}

std::optional<std::int64_t> PathBytes::find(std::string_view key) const {
  if (!snapshot_) return std::nullopt;
  if (const auto folder = folderAt(*snapshot_, key)) return snapshot_->bytes(*folder);
  const std::size_t slash = key.rfind('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const auto parent = folderAt(*snapshot_, key.substr(0, std::max<std::size_t>(slash, 1)));
  return parent ? fileNamed(*snapshot_, *parent, key.substr(slash + 1)) : std::nullopt;
}

PathBytes::Folder PathBytes::folder(std::string_view key) const {
  if (!snapshot_) return {};
  const auto place = folderAt(*snapshot_, key);
  return place ? Folder(std::make_unique<FolderChildren>(snapshot_, *place)) : Folder();
}

std::int64_t PathBytes::size() const {
  return snapshot_ ? snapshot_->entryCount() : 0;
}

void PathBytes::forEach(const std::function<void(std::string_view, std::int64_t)>& visit) const {
  if (!snapshot_) return;
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
