// PathBytes: the map inside an inventory, from path key to bytes, shared between the scan and all its readers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dunmere {

class PathTreeSnapshot;

/// An immutable view of what a scan had counted at one moment: one entry for every counted file and one, the sum below
/// it, for every folder from a counted file's parent up to the scan root. Copies share the data and cost no more than a
/// pointer. Safe to read from any thread while the scan goes on.
class PathBytes {
 public:
  PathBytes() = default;  ///< the empty map
  explicit PathBytes(std::shared_ptr<const PathTreeSnapshot> snapshot) : snapshot_(std::move(snapshot)) {}

  /// Bytes under `key` (a path key, FileUrl::key()); none when the key has no entry. Costs a walk over the siblings on
  /// each level.
  std::optional<std::int64_t> find(std::string_view key) const;

  /// The same for many keys, in their order. Goes over the siblings of each level once for all keys that lead there.
  std::vector<std::optional<std::int64_t>> findAll(const std::vector<std::string>& keys) const;

  /// Number of entries, files and folders.
  std::int64_t size() const;
  bool empty() const { return size() == 0; }

  /// Calls `visit` once for every entry, folders before what they hold. Takes memory for one path only, however deep
  /// the tree is.
  void forEach(const std::function<void(std::string_view key, std::int64_t bytes)>& visit) const;

  /// What it is a view of, for those who follow it; null when nothing was counted.
  const std::shared_ptr<const PathTreeSnapshot>& snapshot() const { return snapshot_; }

 private:
  std::shared_ptr<const PathTreeSnapshot> snapshot_;  // null: nothing was counted
};

}  // namespace dunmere
