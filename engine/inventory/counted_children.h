// CountedChildren: tells what a scan has counted in one folder since the snapshot before.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "engine/inventory/path_tree.h"
#include "engine/sweep_inventory.h"

namespace dunmere {

/// Follows one folder from snapshot to snapshot at the cost of what is new in it: a scan counts all files of a folder,
/// then one child folder after the other, and once it has left a child that child's sum is final. Keeps the snapshot it
/// saw last alive. One thread at a time.
class CountedChildren {
 public:
  using Tell = std::function<void(std::string_view name, bool isFolder, std::int64_t bytes)>;

  CountedChildren() = default;
  /// `folder` is a path key, of a folder that may lie anywhere.
  explicit CountedChildren(std::string folder) : folder_(std::move(folder)) {}

  /// Whether `inventory` is a later snapshot of the scan that was followed last; if not, nothing told until now holds.
  bool continues(const SweepInventory& inventory) const;

  /// Tells every child that has an entry in `inventory` and did not have the same one in the snapshot before; all of
  /// them when this scan has not been followed yet. A name that was counted twice is told twice: the last one holds.
  void follow(const SweepInventory& inventory, const Tell& tell);

 private:
  using FolderIndex = PathTree::FolderIndex;
  using Place = PathTreeSnapshot::Place;

  void begin(const SweepInventory& inventory);
  bool reachFolder(const PathTreeSnapshot& tree);
  std::optional<Place> search(const PathTreeSnapshot& tree, std::string_view name);
  void tellFiles(const PathTreeSnapshot& tree, const Place& folder, const Tell& tell);
  void tellFolders(const PathTreeSnapshot& tree, const Place& folder, const Tell& tell);

  std::string folder_;
  std::shared_ptr<const PathTreeSnapshot> snapshot_;  // the last one; null: nothing was counted
  std::optional<std::string> root_;                   // the scan root's name, when `folder_` is what it lies in
  std::optional<std::string> way_;               // to the folder from where it was reached; none: it lies elsewhere
  FolderIndex reached_ = 0;                      // the last folder on the way that has an entry
  std::optional<PathTree::TextIndex> nextFile_;  // in the folder, once it is reached
  std::optional<FolderIndex> lastFolder_;        // the child of `reached_` that was told, or on the way looked at, last
};

}  // namespace dunmere
