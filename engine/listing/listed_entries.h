// ListedEntries: names and kinds of one folder's entries, read again only when the folder may have changed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/file_system.h"
#include "engine/listing/column_rows.h"

namespace dunmere {

/// Entries keep the order in which the folder was read. One thread at a time.
class ListedEntries {
 public:
  /// Reads the folder to its end, unless its stamp proves that it has not changed. Returns whether the entries differ
  /// from before. After a failure the next call reads the folder in any case.
  std::expected<bool, SweepError> read(OpenFolder& folder);

  std::size_t size() const { return kinds_.size(); }
  /// Raw bytes. Valid until entries have changed.
  std::string_view name(std::size_t position) const { return (*names_)[position]; }
  EntryKind kind(std::size_t position) const { return kinds_[position]; }
  /// Another object exactly when the entries have changed.
  const std::shared_ptr<const EntryNames>& names() const { return names_; }

  /// The position of the entry `name`. Fastest for names that are asked for, kind by kind, in the folder's order. Finds
  /// one of two entries of the same name (the folder was changed while it was read).
  std::optional<std::size_t> find(std::string_view name, EntryKind kind);

 private:
  static constexpr std::size_t kKinds = 4;

  std::optional<std::size_t> inTable(std::string_view name);

  std::shared_ptr<const EntryNames> names_ = std::make_shared<EntryNames>();
  std::vector<EntryKind> kinds_;                              // by position
  std::array<std::size_t, kKinds> next_{};                    // by kind: where the next name is expected
  std::unordered_map<std::string_view, RowPosition> byName_;  // empty until it is needed
  std::optional<FolderStamp> stamp_;                          // from before they were read
};

}  // namespace dunmere
