#include "engine/name_keys.h"

namespace dunmere {

void NameKeys::begin(std::size_t count) {
  bytes_.clear();
  keys_.assign(count, {});
}

std::string_view NameKeys::key(FileSystem& fileSystem, std::size_t position, std::string_view name) {
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
