#include "engine/column_memory.h"

namespace dunmere {

void ColumnMemory::begin(std::string_view names, std::size_t count) {
  if (names == names_) return;
  names_ = names;
  bytes_.clear();
  keys_.assign(count, {});
}

std::string_view ColumnMemory::key(FileSystem& fileSystem, std::size_t position, std::string_view name) {
  Key& key = keys_[position];
  if (key.length == 0) {
    const std::string made = fileSystem.nameSortKey(name);
    key = {bytes_.size(), made.size()};
    bytes_ += made;
  }
  return std::string_view(bytes_).substr(key.begin, key.length);
}

}  // namespace dunmere
