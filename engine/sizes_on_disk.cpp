#include "engine/sizes_on_disk.h"

#include <algorithm>
#include <span>

#include "engine/in_parallel.h"

namespace dunmere {

namespace {

/// So many that a thread for them is worth its start.
constexpr std::size_t kBatch = 512;

void measure(OpenFolder& folder, const ListedEntries& entries, std::span<const ListedEntries::Position> positions,
             std::span<std::int64_t> sizes) {
  EntryBatch batch;
  for (const auto position : positions) batch.add(entries.name(position), {.kind = EntryKind::regularFile});
  if (!folder.measure(batch)) return;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const EntryAttributes& attributes = batch.entries()[i].attributes;
    if (attributes.kind == EntryKind::regularFile) sizes[i] = attributes.countedBytes();
  }
}

}  // namespace

std::vector<std::int64_t> sizesOnDisk(OpenFolder& folder, const ListedEntries& entries,
                                      const std::vector<ListedEntries::Position>& positions) {
  std::vector<std::int64_t> sizes(positions.size(), 0);
  inParallel((positions.size() + kBatch - 1) / kBatch, [&](std::size_t number) {
    const std::size_t first = number * kBatch;
    const std::size_t count = std::min(kBatch, positions.size() - first);
    measure(folder, entries, std::span(positions).subspan(first, count), std::span(sizes).subspan(first, count));
  });
  return sizes;
}

}  // namespace dunmere
