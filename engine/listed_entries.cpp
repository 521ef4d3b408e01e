#include "engine/listed_entries.h"

#include <utility>

namespace dunmere {

std::expected<bool, SweepError> ListedEntries::read(OpenFolder& folder) {
  const std::optional<FolderStamp> stamp = folder.stamp();
  if (stamp && stamp == stamp_) return false;
  stamp_.reset();
  std::vector<char> names;
  std::vector<Entry> entries;
  EntryBatch batch;
  do {
    if (auto result = folder.readEntries(batch); !result) return std::unexpected(std::move(result.error()));
    for (const EntryBatch::Entry& entry : batch.entries()) {
      const std::string_view name = batch.name(entry);
      names.insert(names.end(), name.begin(), name.end());
      entries.push_back({names.size(), entry.attributes.kind});
    }
  } while (!batch.empty());
  stamp_ = stamp;
  if (entries == entries_ && names == names_) return false;
  next_ = {};
  byName_.clear();
  names_ = std::move(names);
  entries_ = std::move(entries);
  return true;
}

std::string_view ListedEntries::name(std::size_t position) const {
  const std::size_t begin = position == 0 ? 0 : entries_[position - 1].nameEnd;
  return std::string_view(names_.data() + begin, entries_[position].nameEnd - begin);
}

std::optional<std::size_t> ListedEntries::find(std::string_view name, EntryKind kind) {
  std::size_t& next = next_[static_cast<std::size_t>(kind)];
  while (next < entries_.size() && entries_[next].kind != kind) ++next;
  const bool isNext = next < entries_.size() && this->name(next) == name;
  const std::optional<std::size_t> found = isNext ? next : inTable(name);
  if (found) next = *found + 1;
  return found;
}

std::optional<std::size_t> ListedEntries::inTable(std::string_view name) {
  if (byName_.empty()) {
    byName_.reserve(entries_.size());
    for (std::size_t position = 0; position < entries_.size(); ++position)
      byName_.emplace(this->name(position), static_cast<Position>(position));
  }
  const auto found = byName_.find(name);
  return found == byName_.end() ? std::nullopt : std::optional<std::size_t>(found->second);
}

}  // namespace dunmere
