// TemporaryTree: a real folder for one test, with every kind of entry that a disk can hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "engine/file_url.h"

namespace dunmere::test {

/// A folder in memory where the system has one, else the one for temporary files: for trees of ten thousands of
/// folders, which a disk makes and removes slowly.
std::string fastFolder();

/// Makes an empty folder that anybody may enter, and removes it with all below it at the end, however deep. Paths are
/// relative to it; parents must exist unless said otherwise. Every function throws std::system_error when it fails.
class TemporaryTree {
 public:
  /// In the system's folder for temporary files.
  TemporaryTree();
  /// In `parent`.
  explicit TemporaryTree(const std::string& parent);
  ~TemporaryTree();
  TemporaryTree(const TemporaryTree&) = delete;
  TemporaryTree& operator=(const TemporaryTree&) = delete;

  /// The absolute path of `relative`, or of the tree itself.
  std::string path(std::string_view relative = {}) const;
  FileUrl url(std::string_view relative = {}) const { return FileUrl(path(relative)); }

  void folder(std::string_view relative) const;                           ///< with missing parents; fine when it exists
  void file(std::string_view relative, std::size_t bytes = 0) const;      ///< really written, synced to its blocks
  void sparseFile(std::string_view relative, std::int64_t bytes) const;   ///< a length without blocks
  void link(std::string_view relative, const std::string& target) const;  ///< symbolic
  void hardLink(std::string_view existing, std::string_view relative) const;
  void fifo(std::string_view relative) const;
  void socket(std::string_view relative) const;
  void device(std::string_view relative) const;  ///< a character device like /dev/null; needs to be root
  void mode(std::string_view relative, unsigned bits) const;
  void rename(std::string_view from, std::string_view to) const;
  void remove(std::string_view relative) const;  ///< with all below it

  /// A chain of `depth` folders under `relative`, each with `siblings` empty folders "s0", "s1" … beside the next one,
  /// which is called `name`. Works by descriptor, so its path may be longer than the system's limit.
  void chain(std::string_view relative, std::size_t depth, std::string_view name, std::size_t siblings = 0) const;

  /// Bytes on disk of `relative` as stat(2) tells them, link not followed.
  std::int64_t allocatedBytes(std::string_view relative) const;

 private:
  std::string root_;
};

}  // namespace dunmere::test
