#include "engine/column_memory.h"

namespace dunmere {

void ColumnMemory::begin(std::string_view names, std::size_t count) {
  if (names == names_) return;
  // The names last: should there be no room for the keys, nothing is remembered.
  names_.clear();
  bytes_.clear();
  keys_.assign(count, {});
  names_ = names;
}

std::string_view ColumnMemory::key(FileSystem& fileSystem, std::size_t position, std::string_view name) {
  Key& key = keys_[position];
  if (key.length == 0) {
    const std::string made = fileSystem.nameSortKey(name);
    const Key place{bytes_.size(), made.size()};
    bytes_ += made;
    key = place;
  }
  return std::string_view(bytes_).substr(key.begin, key.length);
}

}  // namespace dunmere
