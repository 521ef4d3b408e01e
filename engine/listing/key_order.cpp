#include "engine/listing/key_order.h"

#include <algorithm>
#include <cstdint>

namespace dunmere {

namespace {

/// One key on its way through the sort.
struct SortedKey {
  std::uint64_t head = 0;  // its first eight bytes, the first one highest, missing ones 0
  std::string_view bytes;
  std::size_t position = 0;

  bool operator<(const SortedKey& other) const {
    if (head != other.head) return head < other.head;
    // Equal heads may still hide a missing byte behind a zero byte, so the whole is compared.
    const int order = bytes.compare(other.bytes);
    return order != 0 ? order < 0 : position < other.position;
  }
};

std::uint64_t headOf(std::string_view bytes) {
  std::uint64_t head = 0;
  for (std::size_t i = 0; i < sizeof head; ++i) {
    head = head << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
  }
  return head;
}

}  // namespace

std::vector<std::size_t> KeyOrder::sorted() const {
  const std::size_t shared = sharedLength();
  std::vector<SortedKey> keys;
  keys.reserve(keys_.size());
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    const std::string_view bytes = keys_[i].substr(shared);
    keys.push_back({headOf(bytes), bytes, i});
  }
  std::ranges::sort(keys, [](const SortedKey& a, const SortedKey& b) { return a < b; });
  std::vector<std::size_t> positions;
  positions.reserve(keys.size());
  for (const SortedKey& sortedKey : keys) positions.push_back(sortedKey.position);
  return positions;
}

std::size_t KeyOrder::sharedLength() const {
  if (keys_.empty()) return 0;
  std::string_view shared = keys_.front();
  for (std::size_t i = 1; i < keys_.size() && !shared.empty(); ++i) {
    const std::string_view other = keys_[i];
    const auto [end, otherEnd] = std::ranges::mismatch(shared, other);
    shared = std::string_view(shared.begin(), end);
  }
  return shared.size();
}

}  // namespace dunmere
