// MemoryTree: the folders, files and links of a file system in memory, and how paths lead through them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "engine/file_system.h"

namespace dunmere::test {

struct MemoryNode;

/// What only a folder has.
struct MemoryFolder {
  std::vector<MemoryNode*> children;  ///< in the order of adding; null where one was removed, so that a reader's place
                                      ///< stays right
  std::unordered_map<std::string_view, MemoryNode*> byName;
  std::uint64_t version = 0;  ///< counts changes to which entries it has, or of what kinds
  bool unreadable = false;
  bool unmeasurable = false;
  bool takesDiskSpace = true;
  std::optional<std::size_t> failsAfter;  ///< entries handed out before reading fails
};

/// One entry. Lives as long as its tree, even when removed, so that an open folder may be removed like on a real
/// system.
struct MemoryNode {
  std::string name;
  MemoryNode* parent = nullptr;  ///< the root's parent is the root
  std::size_t position = 0;      ///< in the parent's children
  EntryAttributes attributes;
  bool attributesHidden = false;
  std::string linkTarget;
  std::unique_ptr<MemoryFolder> folder;  ///< set for folders only

  MemoryNode* child(std::string_view childName) const;  ///< null when there is none
};

/// Not thread-safe. Builder functions throw std::invalid_argument where a test asks for the impossible. Nothing
/// recurses on the depth of the tree.
class MemoryTree {
 public:
  MemoryTree();
  MemoryTree(const MemoryTree&) = delete;
  MemoryTree& operator=(const MemoryTree&) = delete;

  /// The entry at `path`, made if needed with its missing parents; an entry of another kind is replaced in its place.
  MemoryNode& add(const std::string& path, EntryKind kind);
  /// The entry at `path` itself; links in the path are not followed.
  MemoryNode& at(const std::string& path);
  void remove(const std::string& path);

  /// Where the absolute `path` leads when every link is followed, the last one too.
  std::expected<MemoryNode*, std::errc> resolve(const std::string& path);
  /// The same for a `path` relative to the folder `start`.
  std::expected<MemoryNode*, std::errc> resolve(MemoryNode& start, std::string path);

  /// The path of `node`, which lies at or below `base`, when `base` is spelled `basePath`.
  static std::string pathBelow(const MemoryNode& base, const std::string& basePath, const MemoryNode& node);
  std::string pathOf(const MemoryNode& node) const { return pathBelow(nodes_.front(), "/", node); }

 private:
  MemoryNode& parentFolder(const std::string& parentPath);
  MemoryNode& childFolder(MemoryNode& folder, std::string_view name);
  MemoryNode& newNode(MemoryNode& parent, std::string_view name, EntryKind kind, std::size_t place);
  void detach(MemoryNode& node);
  void forgetLastParent();

  std::deque<MemoryNode> nodes_;  // the root first; a flat pool, so that a deep tree is not destroyed recursively
  // Trees are mostly built folder by folder or downwards: the last parent is where the next search starts.
  std::string lastParentPath_;
  MemoryNode* lastParent_ = nullptr;
};

}  // namespace dunmere::test
