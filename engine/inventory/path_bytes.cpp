#include "engine/inventory/path_bytes.h"

#include <unordered_map>

#include "engine/inventory/path_tree.h"

namespace dunmere {
namespace {

using FolderIndex = PathTree::FolderIndex;
constexpr FolderIndex kRoot = PathTreeSnapshot::kRoot;

/// What of the path key `key` lies below the folder with the key `folder`, without the slash between them; none when it
/// does not lie there.
std::optional<std::string_view> pathBelow(std::string_view folder, std::string_view key) {
  if (folder.empty() || key == folder || !key.starts_with(folder)) return std::nullopt;
  key.remove_prefix(folder.size());
  if (folder.ends_with('/')) return key;
  if (!key.starts_with('/')) return std::nullopt;
  return key.substr(1);
}

/// The folder with this key.
std::optional<FolderIndex> folderAt(const PathTreeSnapshot& tree, std::string_view key) {
  if (key == tree.name(kRoot)) return kRoot;
  auto path = pathBelow(tree.name(kRoot), key);
  std::optional<FolderIndex> folder = kRoot;
  while (path && folder) {
    const std::size_t slash = path->find('/');
    folder = tree.childFolder(*folder, path->substr(0, slash));
    if (slash == std::string_view::npos) return folder;
    path->remove_prefix(slash + 1);
  }
  return std::nullopt;
}

/// Looks many keys up on one way down the tree.
class KeySearch {
 public:
  using Answers = std::vector<std::optional<std::int64_t>>;

  struct Wanted {
    std::string_view path;  // below the folder that was reached
    std::size_t answer;     // where its answer goes
  };

  KeySearch(const PathTreeSnapshot& tree, Answers& answers) : tree_(tree), answers_(answers) {}

  // Trees may be deeper than the stack, so folders that are still to be searched wait in a list.
  void search(std::vector<Wanted> wanted) {
    pending_.push_back({kRoot, std::move(wanted)});
    while (!pending_.empty()) {
      const Folder folder = std::move(pending_.back());
      pending_.pop_back();
      searchFolder(folder);
    }
  }

 private:
  struct Folder {
    FolderIndex index;
    std::vector<Wanted> wanted;
  };

  void searchFolder(const Folder& folder) {
    std::unordered_map<std::string_view, std::vector<Wanted>> byName;
    for (const Wanted& one : folder.wanted) byName[one.path.substr(0, one.path.find('/'))].push_back(one);
    const FolderIndex end = tree_.subtreeEnd(folder.index);
    for (FolderIndex child = folder.index + 1; child != end && !byName.empty(); child = tree_.subtreeEnd(child)) {
      const auto found = byName.extract(tree_.name(child));
      if (!found) continue;
      std::vector<Wanted> below = answer(found.mapped(), found.key(), tree_.bytes(child));
      if (!below.empty()) pending_.push_back({child, std::move(below)});
    }
    auto files = tree_.files(folder.index);
    for (auto file = files.next(); file && !byName.empty(); file = files.next()) {
      if (const auto found = byName.extract(file->name)) answer(found.mapped(), file->name, file->bytes);
    }
  }

  // Answers those that end with `name`, and returns what is left of the others.
  std::vector<Wanted> answer(const std::vector<Wanted>& wanted, std::string_view name, std::int64_t bytes) {
    std::vector<Wanted> below;
    for (const Wanted& one : wanted) {
      if (one.path.size() == name.size()) {
        answers_[one.answer] = bytes;
      } else {
        below.push_back({one.path.substr(name.size() + 1), one.answer});
      }
    }
    return below;
  }

  const PathTreeSnapshot& tree_;
  Answers& answers_;
  std::vector<Folder> pending_;
};

}  // namespace

std::int64_t PathBytes::size() const {
  return snapshot_ ? snapshot_->entryCount() : 0;
}

std::vector<std::optional<std::int64_t>> PathBytes::findAll(const std::vector<std::string>& keys) const {
  std::vector<std::optional<std::int64_t>> answers(keys.size());
  if (empty()) return answers;
  const PathTreeSnapshot& tree = *snapshot_;
  std::vector<KeySearch::Wanted> below;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i] == tree.name(kRoot)) {
      answers[i] = tree.bytes(kRoot);
    } else if (const auto path = pathBelow(tree.name(kRoot), keys[i])) {
      below.push_back({*path, i});
    }
  }
  if (!below.empty()) KeySearch(tree, answers).search(std::move(below));
  return answers;
}

void PathBytes::forEachChild(std::string_view folder, const VisitChild& visit) const {
  if (empty()) return;
  const PathTreeSnapshot& tree = *snapshot_;
  const auto root = pathBelow(folder, tree.name(kRoot));
  if (root && !root->contains('/')) visit(*root, true, tree.bytes(kRoot));
  const auto found = folderAt(tree, folder);
  if (!found) return;
  auto files = tree.files(*found);
  while (const auto file = files.next()) visit(file->name, false, file->bytes);
  const FolderIndex end = tree.subtreeEnd(*found);
  for (FolderIndex child = *found + 1; child != end; child = tree.subtreeEnd(child))
    visit(tree.name(child), true, tree.bytes(child));
}

void PathBytes::forEach(const VisitEntry& visit) const {
  const FolderIndex folders = snapshot_ ? snapshot_->folderCount() : 0;
  struct Level {
    FolderIndex subtreeEnd;
    std::size_t keyLength;
  };
  std::vector<Level> levels;  // of the folder that is visited and those above it
  std::string key;
  const auto setName = [&](std::string_view name) {
    key.resize(levels.empty() ? 0 : levels.back().keyLength);
    if (!key.empty() && !key.ends_with('/')) key += '/';
    key += name;
  };
  for (FolderIndex folder = 0; folder < folders; ++folder) {
    while (!levels.empty() && levels.back().subtreeEnd <= folder) levels.pop_back();
    setName(snapshot_->name(folder));
    levels.push_back({snapshot_->subtreeEnd(folder), key.size()});
    visit(key, snapshot_->bytes(folder));
    auto files = snapshot_->files(folder);
    while (const auto file = files.next()) {
      setName(file->name);
      visit(key, file->bytes);
    }
  }
}

}  // namespace dunmere
