// KeyOrder: puts many byte strings in order, fast even when they all begin alike.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dunmere {

/// Collects keys, then tells their order by bytes; equal keys stay in the order in which they were added. One thread.
///
/// Names in one folder, and so their sort keys, tend to share a beginning ("IMG_2024…"). What all keys share is left
/// out of every comparison, and the eight bytes after it are compared as one number; only keys that agree there are
/// looked up in memory.
class KeyOrder {
 public:
  void reserve(std::size_t keys) { ends_.reserve(keys); }
  void add(std::string_view key);

  /// Positions of the keys, counted from 0 as they were added, in ascending order of the keys.
  std::vector<std::size_t> sorted() const;

 private:
  std::string_view key(std::size_t position) const;
  std::size_t sharedLength() const;

  std::string bytes_;              // of all keys, side by side
  std::vector<std::size_t> ends_;  // where each key ends in it
};

}  // namespace dunmere
