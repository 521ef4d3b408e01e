// PathBytes: the map inside an inventory, from path key to bytes, shared between the scan and all its readers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace dunmere {

class PathTree;

/// An immutable view of what a scan had counted at one moment: one entry for every counted file and one, the sum below
/// it, for every folder from a counted file's parent up to the scan root. Copies share the data. Safe to read from any
/// thread while the scan goes on.
class PathBytes {
 public:
  /// The counted children of one folder, for a listing. Keeps its snapshot alive. One thread at a time.
  class Folder {
   public:
    Folder() = default;  ///< a folder without counted children

    /// Bytes under the child `name`, file or folder; none when it has no entry. Costs O(1) when children are asked for
    /// in the order in which the scan read the folder, which is the order of a listing while the folder is unchanged.
    std::optional<std::int64_t> bytesOf(std::string_view name);
  };

  PathBytes() = default;  ///< the empty map

  /// Bytes under `key` (a path key, FileUrl::key()); none when the key has no entry.
  std::optional<std::int64_t> find(std::string_view key) const;

  /// The entries of one folder for a listing; an empty Folder when nothing below `key` was counted.
  Folder folder(std::string_view key) const;

  /// Number of entries, files and folders.
  std::int64_t size() const;
  bool empty() const { return size() == 0; }

  /// Calls `visit` once for every entry, folders before what they hold.
  void forEach(const std::function<void(std::string_view key, std::int64_t bytes)>& visit) const;
};

}  // namespace dunmere
