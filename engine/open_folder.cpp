#include "engine/file_system.h"

namespace dunmere {

std::expected<void, SweepError> OpenFolder::measure(EntryBatch& batch) {
  for (std::size_t position = 0; position < batch.size(); ++position) {
    const EntryBatch::Entry& entry = batch.entries()[position];
    if (entry.attributes.kind != EntryKind::regularFile || entry.attributes.hasSize()) continue;
    const auto found = attributes(batch.name(entry));
    const bool isFile = found && found->kind == EntryKind::regularFile;
    batch.setAttributes(position, isFile ? *found : EntryAttributes{.kind = EntryKind::other});
  }
  return {};
}

}  // namespace dunmere
