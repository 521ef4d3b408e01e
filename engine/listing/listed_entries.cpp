#include "engine/listing/listed_entries.h"

#include <utility>

namespace dunmere {

std::expected<bool, SweepError> ListedEntries::read(OpenFolder& folder) {
  next_ = {};
  const std::optional<FolderStamp> stamp = folder.stamp();
  if (stamp && stamp == stamp_) return false;
  stamp_.reset();
  auto names = std::make_shared<EntryNames>();
  std::vector<EntryKind> kinds;
  EntryBatch batch;
  do {
    if (auto result = folder.readEntries(batch); !result) return std::unexpected(std::move(result.error()));
    for (const EntryBatch::Entry& entry : batch.entries()) {
      names->add(batch.name(entry));
      kinds.push_back(entry.attributes.kind);
    }
  } while (!batch.empty());
  stamp_ = stamp;
  if (kinds == kinds_ && *names == *names_) return false;
  byName_.clear();
  names_ = std::move(names);
  kinds_ = std::move(kinds);
  return true;
}

std::optional<std::size_t> ListedEntries::find(std::string_view name, EntryKind kind) {
  std::size_t& next = next_[static_cast<std::size_t>(kind)];
  while (next < kinds_.size() && kinds_[next] != kind) ++next;
  const bool isNext = next < kinds_.size() && this->name(next) == name;
  const std::optional<std::size_t> found = isNext ? next : inTable(name);
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
