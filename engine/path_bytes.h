// PathBytes: the map inside an inventory, from path key to bytes, shared between the scan and all its readers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace dunmere {

class FolderChildren;
class PathFinder;
class PathTreeSnapshot;

/// An immutable view of what a scan had counted at one moment: one entry for every counted file and one, the sum below
/// it, for every folder from a counted file's parent up to the scan root. Copies share the data and cost no more than a
/// pointer. Safe to read from any thread while the scan goes on.
class PathBytes {
 public:
  /// The counted children of one folder, for a listing. Keeps its snapshot alive. One thread at a time.
  class Folder {
   public:
    Folder();  ///< a folder without counted children
    Folder(Folder&&) noexcept;
    Folder& operator=(Folder&&) noexcept;
    ~Folder();

    /// Bytes under the child `name`, file or folder; none when it has no entry. Costs O(1) when children are asked for
    /// in the order in which the scan read the folder, which is the order of a listing while the folder is unchanged.
    /// The first name out of that order, or without an entry, costs O(children) once; later ones O(1).
    std::optional<std::int64_t> bytesOf(std::string_view name);

   private:
    friend class PathBytes;
    explicit Folder(std::unique_ptr<FolderChildren> children);

    std::unique_ptr<FolderChildren> children_;  // null: none were counted
  };

  PathBytes() = default;  ///< the empty map
  explicit PathBytes(std::shared_ptr<const PathTreeSnapshot> snapshot) : snapshot_(std::move(snapshot)) {}

  /// Bytes under `key` (a path key, FileUrl::key()); none when the key has no entry. Costs a walk over the siblings on
  /// each level: for a whole column use folder(), for many keys a PathFinder.
  std::optional<std::int64_t> find(std::string_view key) const;

  /// The entries of one folder for a listing; an empty Folder when nothing below `key` was counted.
  Folder folder(std::string_view key) const;

  /// Number of entries, files and folders.
  std::int64_t size() const;
  bool empty() const { return size() == 0; }

  /// Calls `visit` once for every entry, folders before what they hold. Takes memory for one path only, however deep
  /// the tree is.
  void forEach(const std::function<void(std::string_view key, std::int64_t bytes)>& visit) const;

 private:
  friend class PathFinder;

  std::shared_ptr<const PathTreeSnapshot> snapshot_;  // null: nothing was counted
};

}  // namespace dunmere
