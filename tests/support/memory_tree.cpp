#include "tests/support/memory_tree.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace dunmere::test {

namespace {

constexpr int kMostLinks = 40;  // as Linux has it

/// Cuts the first component off `rest`; empty when there is none left.
std::string_view takeComponent(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
  const std::string_view component = rest.substr(0, rest.find('/'));
  rest.remove_prefix(component.size());
  return component;
}

/// Parent path and name of `path`, trailing slashes dropped.
std::pair<std::string, std::string> splitLast(const std::string& path) {
  const std::size_t last = path.find_last_not_of('/');
  if (!path.starts_with('/') || last == std::string::npos) throw std::invalid_argument("no entry's path: " + path);
  const std::size_t slash = path.rfind('/', last);
  return {path.substr(0, slash), path.substr(slash + 1, last - slash)};
}

}  // namespace

MemoryNode* MemoryNode::child(std::string_view childName) const {
  if (!folder) return nullptr;
  const auto found = folder->byName.find(childName);
  return found == folder->byName.end() ? nullptr : found->second;
}

MemoryTree::MemoryTree() {
  MemoryNode& root = nodes_.emplace_back();
  root.parent = &root;
  root.attributes.kind = EntryKind::folder;
  root.folder = std::make_unique<MemoryFolder>();
  forgetLastParent();
}

MemoryNode& MemoryTree::add(const std::string& path, EntryKind kind) {
  if (kind == EntryKind::folder && path.find_first_not_of('/') == std::string::npos) return nodes_.front();
  const auto [parentPath, name] = splitLast(path);
  MemoryNode& parent = parentFolder(parentPath);
  if (MemoryNode* existing = parent.child(name)) {
    if (existing->attributes.kind == kind) return *existing;
    const std::size_t place = existing->position;
    detach(*existing);
    return newNode(parent, name, kind, place);
  }
  return newNode(parent, name, kind, parent.folder->children.size());
}

MemoryNode& MemoryTree::at(const std::string& path) {
  if (path == "/") return nodes_.front();
  const auto [parentPath, name] = splitLast(path);
  MemoryNode* node = &nodes_.front();
  std::string_view rest = parentPath;
  for (std::string_view component = takeComponent(rest); node && !component.empty(); component = takeComponent(rest)) {
    node = node->child(component);
  }
  if (node) node = node->child(name);
  if (!node) throw std::invalid_argument("no such entry: " + path);
  return *node;
}

void MemoryTree::remove(const std::string& path) {
  detach(at(path));
}

std::expected<MemoryNode*, std::errc> MemoryTree::resolve(const std::string& path) {
  if (!path.starts_with('/')) return std::unexpected(std::errc::no_such_file_or_directory);
  return resolve(nodes_.front(), path);
}

std::expected<MemoryNode*, std::errc> MemoryTree::resolve(MemoryNode& start, std::string path) {
  MemoryNode* node = &start;
  std::string_view rest = path;
  int links = 0;
  for (std::string_view component = takeComponent(rest); !component.empty(); component = takeComponent(rest)) {
    if (!node->folder) return std::unexpected(std::errc::not_a_directory);
    if (component == ".") continue;
    if (component == "..") {
      node = node->parent;
      continue;
    }
    MemoryNode* child = node->child(component);
    if (!child) return std::unexpected(std::errc::no_such_file_or_directory);
    if (child->attributes.kind != EntryKind::symbolicLink) {
      node = child;
      continue;
    }
    if (++links > kMostLinks) return std::unexpected(std::errc::too_many_symbolic_link_levels);
    if (child->linkTarget.empty()) return std::unexpected(std::errc::no_such_file_or_directory);
    if (child->linkTarget.starts_with('/')) node = &nodes_.front();
    path = child->linkTarget + std::string(rest);
    rest = path;
  }
  return node;
}

std::string MemoryTree::pathBelow(const MemoryNode& base, const std::string& basePath, const MemoryNode& node) {
  std::vector<const MemoryNode*> way;
  std::size_t length = basePath.size();
  for (const MemoryNode* step = &node; step != &base; step = step->parent) {
    way.push_back(step);
    length += step->name.size() + 1;
  }
  std::string path;
  path.reserve(length);
  path = basePath;
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    if (!path.ends_with('/')) path += '/';
    path += (*step)->name;
  }
  return path;
}

MemoryNode& MemoryTree::parentFolder(const std::string& parentPath) {
  MemoryNode* folder = &nodes_.front();
  std::string_view rest = parentPath;
  if (rest.starts_with(lastParentPath_)) {
    const std::string_view below = rest.substr(lastParentPath_.size());
    if (below.empty() || below.starts_with('/')) {
      folder = lastParent_;
      rest = below;
    }
  }
  for (std::string_view component = takeComponent(rest); !component.empty(); component = takeComponent(rest)) {
    folder = &childFolder(*folder, component);
  }
  lastParentPath_ = parentPath;
  lastParent_ = folder;
  return *folder;
}

MemoryNode& MemoryTree::childFolder(MemoryNode& folder, std::string_view name) {
  MemoryNode* child = folder.child(name);
  if (!child) return newNode(folder, name, EntryKind::folder, folder.folder->children.size());
  if (!child->folder) throw std::invalid_argument("not a folder: " + pathOf(*child));
  return *child;
}

MemoryNode& MemoryTree::newNode(MemoryNode& parent, std::string_view name, EntryKind kind, std::size_t place) {
  MemoryNode& node = nodes_.emplace_back();
  node.name = name;
  node.parent = &parent;
  node.position = place;
  node.attributes.kind = kind;
  if (kind == EntryKind::folder) node.folder = std::make_unique<MemoryFolder>();
  if (place == parent.folder->children.size()) parent.folder->children.push_back(nullptr);
  parent.folder->children[place] = &node;
  parent.folder->byName.emplace(node.name, &node);
  ++parent.folder->version;
  return node;
}

void MemoryTree::detach(MemoryNode& node) {
  if (node.parent == &node) throw std::invalid_argument("the root folder cannot be removed");
  node.parent->folder->byName.erase(node.name);
  node.parent->folder->children[node.position] = nullptr;
  ++node.parent->folder->version;
  forgetLastParent();
  // Whoever holds a removed folder open finds it empty.
  std::vector<MemoryNode*> removed = {&node};
  while (!removed.empty()) {
    MemoryFolder* folder = removed.back()->folder.get();
    removed.pop_back();
    if (!folder) continue;
    std::ranges::copy_if(folder->children, std::back_inserter(removed),
                         [](MemoryNode* child) { return child != nullptr; });
    folder->children.clear();
    folder->byName.clear();
    ++folder->version;
  }
}

void MemoryTree::forgetLastParent() {
  lastParentPath_.clear();
  lastParent_ = &nodes_.front();
}

}  // namespace dunmere::test
