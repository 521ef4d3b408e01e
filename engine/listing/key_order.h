// KeyOrder: puts many byte strings in order, fast even when they all begin alike.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace dunmere {

/// Collects keys, whose bytes must stay where they are, then tells their order by bytes; equal keys stay in the order
/// in which they were added. One thread.
///
/// Names in one folder, and so their sort keys, tend to share a beginning ("IMG_2024…"). What all keys share is left
/// out of every comparison, and the eight bytes after it are compared as one number; only keys that agree there are
/// looked up in memory.
class KeyOrder {
 public:
  void reserve(std::size_t keys) { keys_.reserve(keys); }
  void add(std::string_view key) { keys_.push_back(key); }

  /// Positions of the keys, counted from 0 as they were added, in ascending order of the keys.
  std::vector<std::size_t> sorted() const;

 private:
  std::size_t sharedLength() const;

  std::vector<std::string_view> keys_;
};

}  // namespace dunmere
