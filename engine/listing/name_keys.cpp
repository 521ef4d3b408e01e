#include "engine/listing/name_keys.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "engine/listing/in_parallel.h"

namespace dunmere {

void NameKeys::begin(std::size_t count) {
  keys_.assign(count, {});
  bytes_ = std::make_unique<std::pmr::monotonic_buffer_resource>();
}

void NameKeys::make(FileSystem& fileSystem, const ListedEntries& entries, std::span<const RowPosition> positions) {
  std::vector<RowPosition> missing;
  std::ranges::copy_if(positions, std::back_inserter(missing), [this](auto p) { return keys_[p].data() == nullptr; });
  std::vector<std::string> made(missing.size());
  // So many that a thread for them is worth its start.
  constexpr std::size_t kBatch = 512;
  inParallel((missing.size() + kBatch - 1) / kBatch, [&](std::size_t number) {
    const std::size_t end = std::min(missing.size(), (number + 1) * kBatch);
    for (std::size_t i = number * kBatch; i < end; ++i) made[i] = fileSystem.nameSortKey(entries.name(missing[i]));
  });
  for (std::size_t i = 0; i < missing.size(); ++i) keep(missing[i], made[i]);
}

void NameKeys::keep(std::size_t position, std::string_view key) {
  auto* const bytes = static_cast<char*>(bytes_->allocate(key.size(), 1));
  std::ranges::copy(key, bytes);
  keys_[position] = std::string_view(bytes, key.size());
}

std::string_view NameKeys::key(FileSystem& fileSystem, std::size_t position, std::string_view name) {
  if (keys_[position].data() == nullptr) keep(position, fileSystem.nameSortKey(name));
  return keys_[position];
}

}  // namespace dunmere
