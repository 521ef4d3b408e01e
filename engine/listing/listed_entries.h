// ListedEntries: names and kinds of one folder's entries.
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
  /// Finds entries by name, fastest for names that are asked for, kind by kind, in the folder's order.
  class Finder {
   public:
    /// `entries` must stay as they are as long as this object is used.
    explicit Finder(ListedEntries& entries) : entries_(entries) {}

    /// The position of the entry `name`, whatever its kind; `kind` is what it most likely is. Finds one of two entries
    /// of the same name (the folder was changed while it was read).
    std::optional<std::size_t> find(std::string_view name, EntryKind kind);

   private:
    static constexpr std::size_t kKinds = 4;

    ListedEntries& entries_;
    std::array<std::size_t, kKinds> next_{};  // by kind: where the next name is expected
  };

  ListedEntries() = default;  ///< no entries

  /// Reads the folder to its end.
  static std::expected<ListedEntries, SweepError> read(OpenFolder& folder);

  std::size_t size() const { return kinds_.size(); }
  /// Raw bytes. Valid as long as names().
  std::string_view name(std::size_t position) const { return (*names_)[position]; }
  EntryKind kind(std::size_t position) const { return kinds_[position]; }
  const std::shared_ptr<const EntryNames>& names() const { return names_; }

  /// Whether both have the same entries in the same order.
  friend bool operator==(const ListedEntries& a, const ListedEntries& b) {
    return a.kinds_ == b.kinds_ && *a.names_ == *b.names_;
  }

 private:
  std::optional<std::size_t> inTable(std::string_view name);

  std::shared_ptr<const EntryNames> names_ = std::make_shared<EntryNames>();
  std::vector<EntryKind> kinds_;                              // by position
  std::unordered_map<std::string_view, RowPosition> byName_;  // empty until it is needed
};

}  // namespace dunmere
