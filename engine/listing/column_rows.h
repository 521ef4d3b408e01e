// ColumnRows: the rows of one column as they were at one moment, and what changed since the moment before.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/file_url.h"
#include "engine/listing/list_changes.h"
#include "engine/sweeper_values.h"

namespace dunmere {

/// Which entry of the folder a row shows, counted from 0 in the order in which the folder was read.
using RowPosition = std::uint32_t;

/// The names of a folder's entries, raw bytes side by side, in the order in which the folder was read.
class EntryNames {
 public:
  void add(std::string_view name);

  std::size_t size() const { return ends_.size(); }
  /// Valid as long as this object is unchanged.
  std::string_view operator[](std::size_t position) const;

  friend bool operator==(const EntryNames&, const EntryNames&) = default;

 private:
  std::vector<char> bytes_;
  std::vector<std::size_t> ends_;  // a name begins where the one before ends
};

/// What a row shows beside its name.
struct ColumnRow {
  std::int64_t sizeBytes = 0;  ///< bytes
  RowPosition position = 0;
  bool isDirectory = false;     ///< the entry, or a link's target, is a folder
  bool isSymbolicLink = false;  ///< the entry itself is one

  friend bool operator==(const ColumnRow&, const ColumnRow&) = default;
};

/// How the rows of one generation turn into those of the next.
struct ColumnChanges {
  /// More steps than this cost a view more than sorting its rows in place, however many rows move.
  static constexpr std::size_t kMostSteps = 250;

  std::uint64_t since = 0;                                     ///< generation of the rows before; 0: there were none
  std::optional<std::vector<ListChange>> steps;                ///< none when more than kMostSteps would be needed
  ListMatch match;                                             ///< filled only when there are no steps
  std::vector<std::pair<std::size_t, std::size_t>> shownAnew;  ///< first and last of each run of rows with new values
};

/// An immutable value that costs no more than a pointer to copy. A name is kept once, however many generations share
/// it. Safe to hand between threads.
class ColumnRows {
 public:
  struct Content {
    FileUrl parent;  ///< the folder whose children these are
    std::shared_ptr<const EntryNames> names;
    std::vector<ColumnRow> rows;  ///< in the order in which they are shown
    bool partialMark = false;     ///< folders' sizes are lower bounds
    ColumnChanges changes;
    std::uint64_t generation = nextGeneration();
  };

  ColumnRows() : content_(nothing()) {}  ///< no rows
  explicit ColumnRows(Content content) : content_(std::make_shared<const Content>(std::move(content))) {}
  // Moves are copies, so that no value is ever without content.
  ColumnRows(const ColumnRows&) = default;
  ColumnRows& operator=(const ColumnRows&) = default;

  std::size_t size() const { return content_->rows.size(); }
  bool empty() const { return size() == 0; }
  /// Unique in the process; 0 for rows that were never listed.
  std::uint64_t generation() const { return content_->generation; }
  const ColumnChanges& changes() const { return content_->changes; }

  const ColumnRow& row(std::size_t index) const { return content_->rows[index]; }
  std::string_view name(std::size_t index) const { return (*content_->names)[row(index).position]; }
  bool sizeIsPartialMinimum(std::size_t index) const { return row(index).isDirectory && content_->partialMark; }
  SweeperItem operator[](std::size_t index) const;
  std::vector<SweeperItem> items() const;

  /// The first row of this child; none when it has no row.
  std::optional<std::size_t> find(const FileUrl& url) const;

  /// The same rows in the same order, whatever their generations.
  friend bool operator==(const ColumnRows& a, const ColumnRows& b);

  const Content& content() const { return *content_; }

 private:
  static std::uint64_t nextGeneration();
  static std::shared_ptr<const Content> nothing();

  std::shared_ptr<const Content> content_;
};

/// How `before` turns into `after`, whose changes are not filled yet.
ColumnChanges changesBetween(const ColumnRows& before, const ColumnRows::Content& after);

}  // namespace dunmere
