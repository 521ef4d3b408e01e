#include "engine/inventory/path_bytes.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <vector>

#include "engine/inventory/path_tree.h"

namespace dunmere {

namespace {

using Place = PathTreeSnapshot::Place;

// Looks many keys up on one way down the tree.
class KeySearch {
 public:
  using Answers = std::vector<std::optional<std::int64_t>>;

  // What is left of a key below the folder that was reached.
  struct Wanted {
    std::optional<std::string_view> path;  // none when nothing is left
    std::size_t key;                       // whose answer it is
  };

  KeySearch(const PathTreeSnapshot& tree, Answers& answers) : tree_(tree), answers_(answers) {}

  // Trees may be deeper than the stack, so folders that are still to be searched wait in a list.
  void search(const Place& root, std::vector<Wanted> wanted) {
    folders_.push_back({root, std::move(wanted)});
    while (!folders_.empty()) {
      const Folder folder = std::move(folders_.back());
      folders_.pop_back();
      searchFolder(folder);
    }
  }

 private:
  struct Folder {
    Place place;
    std::vector<Wanted> wanted;  // below it
  };

  void searchFolder(const Folder& folder) {
    std::unordered_map<std::string_view, std::vector<Wanted>> byName;
    for (const Wanted& one : folder.wanted) {
      const std::size_t slash = one.path->find('/');
      auto rest = slash == std::string_view::npos ? std::nullopt : std::optional(one.path->substr(slash + 1));
      byName[one.path->substr(0, slash)].push_back({rest, one.key});
    }
    for (auto child = tree_.firstChild(folder.place); child && !byName.empty();
         child = tree_.nextChild(folder.place, *child)) {
      if (const auto found = byName.extract(tree_.name(*child))) enter(*child, found.mapped());
    }
    for (PathTreeFiles files = tree_.files(folder.place); !files.atEnd() && !byName.empty();) {
      const PackedFile file = files.take();
      if (const auto found = byName.extract(file.name)) answer(found.mapped(), file.bytes);
    }
  }

  void enter(const Place& folder, const std::vector<Wanted>& wanted) {
    answer(wanted, tree_.bytes(folder));
    std::vector<Wanted> below;
    std::ranges::copy_if(wanted, std::back_inserter(below), [](const Wanted& one) { return one.path.has_value(); });
    if (!below.empty()) folders_.push_back({folder, std::move(below)});
  }

  // Of those that end here.
  void answer(const std::vector<Wanted>& wanted, std::int64_t bytes) {
    for (const Wanted& one : wanted) {
      if (!one.path) answers_[one.key] = bytes;
    }
  }

  const PathTreeSnapshot& tree_;
  Answers& answers_;
  std::vector<Folder> folders_;
};

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
  return findAll({std::string(key)}).front();
}

std::vector<std::optional<std::int64_t>> PathBytes::findAll(const std::vector<std::string>& keys) const {
  std::vector<std::optional<std::int64_t>> answers(keys.size());
  if (empty() || keys.empty()) return answers;
  const PathTreeSnapshot& tree = *snapshot_;
  const Place root = *tree.root();
  std::vector<KeySearch::Wanted> below;
  for (std::size_t key = 0; key < keys.size(); ++key) {
    if (keys[key] == tree.name(root)) {
      answers[key] = tree.bytes(root);
    } else if (const auto path = tree.pathBelowRoot(keys[key])) {
      below.push_back({*path, key});
    }
  }
  if (!below.empty()) KeySearch(tree, answers).search(root, std::move(below));
  return answers;
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
