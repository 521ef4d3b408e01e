// PathBytes: the map inside an inventory, from path key to bytes, shared between the scan and all its readers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dunmere {

class PathTreeSnapshot;

/// An immutable view of what a scan had counted at one moment: one entry for every counted file and one, the sum below
/// it, for every folder from a counted file's parent up to the scan root. Copies share the data and cost no more than a
/// pointer. Safe to read from any thread while the scan goes on.
class PathBytes {
 public:
  using VisitEntry = std::function<void(std::string_view key, std::int64_t bytes)>;
  using VisitChild = std::function<void(std::string_view name, bool isFolder, std::int64_t bytes)>;

  PathBytes() = default;  ///< the empty map
  explicit PathBytes(std::shared_ptr<const PathTreeSnapshot> snapshot) : snapshot_(std::move(snapshot)) {}

  /// Whether they are views of the same moment, or both empty.
  friend bool operator==(const PathBytes&, const PathBytes&) = default;

  /// Number of entries, files and folders.
  std::int64_t size() const;
  bool empty() const { return size() == 0; }

  /// Bytes under `key` (a path key, FileUrl::key()); none when the key has no entry. Costs a walk over the siblings on
  /// each level.
  std::optional<std::int64_t> find(const std::string& key) const { return findAll({key}).front(); }

  /// The same for many keys, in their order. Goes over the siblings of each level once for all keys that lead there.
  std::vector<std::optional<std::int64_t>> findAll(const std::vector<std::string>& keys) const;

  /// Calls `visit` for every child with an entry of the folder with this key, which may lie anywhere. A name that was
  /// counted twice comes twice. Costs as much as find() and a walk over the children.
  void forEachChild(std::string_view folder, const VisitChild& visit) const;

  /// Calls `visit` once for every entry, folders before what they hold. Takes memory for one path only, however deep
  /// the tree is.
  void forEach(const VisitEntry& visit) const;

 private:
  std::shared_ptr<const PathTreeSnapshot> snapshot_;  // null: nothing was counted
};

}  // namespace dunmere
