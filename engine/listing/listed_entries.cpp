#include "engine/listing/listed_entries.h"

#include <utility>

namespace dunmere {

std::expected<ListedEntries, SweepError> ListedEntries::read(OpenFolder& folder) {
  ListedEntries entries;
  auto names = std::make_shared<EntryNames>();
  EntryBatch batch;
  do {
    if (auto result = folder.readEntries(batch); !result) return std::unexpected(std::move(result.error()));
    for (const EntryBatch::Entry& entry : batch.entries()) {
      names->add(batch.name(entry));
      entries.kinds_.push_back(entry.attributes.kind);
    }
  } while (!batch.empty());
  entries.names_ = std::move(names);
  return entries;
}

std::optional<std::size_t> ListedEntries::Finder::find(std::string_view name, EntryKind kind) {
  std::size_t& next = next_[static_cast<std::size_t>(kind)];
  while (next < entries_.size() && entries_.kind(next) != kind) ++next;
  const bool isNext = next < entries_.size() && entries_.name(next) == name;
  const std::optional<std::size_t> found = isNext ? next : entries_.inTable(name);
  if (found) next = *found + 1;
  return found;
}

std::optional<std::size_t> ListedEntries::inTable(std::string_view name) {
  if (byName_.empty()) {
    byName_.reserve(kinds_.size());
    for (std::size_t position = 0; position < kinds_.size(); ++position)
      byName_.emplace(this->name(position), static_cast<RowPosition>(position));
  }
  const auto found = byName_.find(name);
  return found == byName_.end() ? std::nullopt : std::optional<std::size_t>(found->second);
}

}  // namespace dunmere
