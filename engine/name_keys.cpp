#include "engine/name_keys.h"

#include <algorithm>
#include <string>

namespace dunmere {

void NameKeys::begin(std::size_t count) {
  keys_.assign(count, {});
  bytes_ = std::make_unique<std::pmr::monotonic_buffer_resource>();
}

std::string_view NameKeys::key(FileSystem& fileSystem, std::size_t position, std::string_view name) {
  std::string_view& key = keys_[position];
  if (key.data() == nullptr) {
    const std::string made = fileSystem.nameSortKey(name);
    auto* const bytes = static_cast<char*>(bytes_->allocate(made.size(), 1));
    std::ranges::copy(made, bytes);
    key = std::string_view(bytes, made.size());
  }
  return key;
}

}  // namespace dunmere
