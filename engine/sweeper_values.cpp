// Hashes of the engine's value types: the same fields, in the same order, as their equality.
#include "engine/sweeper_item.h"
#include "engine/sweeper_volume.h"

namespace {

template <typename Field>
void feed(std::size_t& seed, const Field& field) {
  // The golden-ratio mix of the well-known hash combiner: spreads equal fields at different positions apart.
  seed ^= std::hash<Field>{}(field) + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
}

template <typename... Fields>
std::size_t hashOf(const Fields&... fields) {
  std::size_t seed = 0;
  (feed(seed, fields), ...);
  return seed;
}

}  // namespace

std::size_t std::hash<dunmere::SweeperVolume>::operator()(const dunmere::SweeperVolume& volume) const noexcept {
  return hashOf(volume.url, volume.name, volume.totalBytes, volume.freeBytes);
}

std::size_t std::hash<dunmere::SweeperItem>::operator()(const dunmere::SweeperItem& item) const noexcept {
  return hashOf(item.url, item.name, item.isDirectory, item.sizeBytes, item.sizeIsPartialMinimum, item.isSymbolicLink);
}
