#include "engine/listing/column_rows.h"

#include <atomic>

namespace dunmere {

namespace {

std::vector<std::string_view> shownNames(const ColumnRows::Content& content) {
  std::vector<std::string_view> names;
  names.reserve(content.rows.size());
  for (const ColumnRow& row : content.rows) names.push_back((*content.names)[row.position]);
  return names;
}

/// Positions tell rows apart as long as the folder holds the same names.
ListMatch matchPositions(const std::vector<ColumnRow>& before, const std::vector<ColumnRow>& after) {
  std::vector<std::size_t> oldRows(before.size());
  for (std::size_t row = 0; row < before.size(); ++row) oldRows[before[row].position] = row;
  ListMatch match{before.size(), std::vector<std::size_t>(after.size())};
  for (std::size_t row = 0; row < after.size(); ++row) match.oldIndex[row] = oldRows[after[row].position];
  return match;
}

bool showsTheSame(const ColumnRows::Content& before, const ColumnRow& was, const ColumnRows::Content& after,
                  const ColumnRow& is) {
  return was.sizeBytes == is.sizeBytes && was.isDirectory == is.isDirectory &&
         was.isSymbolicLink == is.isSymbolicLink && (!is.isDirectory || before.partialMark == after.partialMark);
}

/// Runs of rows that stayed and show something else. Very many are merged into one: a view looks at every run, but only
/// at those of its rows that are on screen.
std::vector<std::pair<std::size_t, std::size_t>> changedRuns(const ListMatch& match, const ColumnRows::Content& before,
                                                             const ColumnRows::Content& after) {
  std::vector<std::pair<std::size_t, std::size_t>> runs;
  for (std::size_t row = 0; row < after.rows.size(); ++row) {
    const std::size_t old = match.oldIndex[row];
    if (old == ListMatch::kNew || showsTheSame(before, before.rows[old], after, after.rows[row])) continue;
    if (!runs.empty() && runs.back().second + 1 == row) {
      runs.back().second = row;
    } else {
      runs.emplace_back(row, row);
    }
  }
  if (runs.size() > ColumnChanges::kMostSteps) runs = {{runs.front().first, runs.back().second}};
  return runs;
}

}  // namespace

void EntryNames::add(std::string_view name) {
  bytes_.insert(bytes_.end(), name.begin(), name.end());
  ends_.push_back(bytes_.size());
}

std::string_view EntryNames::operator[](std::size_t position) const {
  const std::size_t begin = position == 0 ? 0 : ends_[position - 1];
  return std::string_view(bytes_.data() + begin, ends_[position] - begin);
}

std::uint64_t ColumnRows::nextGeneration() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

std::shared_ptr<const ColumnRows::Content> ColumnRows::nothing() {
  static const auto kNothing = std::make_shared<const Content>(
      Content{.parent = {},
              .names = std::make_shared<EntryNames>(),
              .rows = {},
              .partialMark = false,
              .changes = {.since = 0, .steps = std::vector<ListChange>(), .match = {}, .shownAnew = {}},
              .generation = 0});
  return kNothing;
}

SweeperItem ColumnRows::operator[](std::size_t index) const {
  const ColumnRow& shown = row(index);
  return {.url = content_->parent.appending(name(index)),
          .name = std::string(name(index)),
          .isDirectory = shown.isDirectory,
          .sizeBytes = shown.sizeBytes,
          .sizeIsPartialMinimum = sizeIsPartialMinimum(index),
          .isSymbolicLink = shown.isSymbolicLink};
}

std::vector<SweeperItem> ColumnRows::items() const {
  std::vector<SweeperItem> items;
  items.reserve(size());
  for (std::size_t index = 0; index < size(); ++index) items.push_back((*this)[index]);
  return items;
}

std::optional<std::size_t> ColumnRows::find(const FileUrl& url) const {
  const std::string& path = url.bytes();
  const std::string prefix = content_->parent.appending("").bytes();
  if (!path.starts_with(prefix)) return std::nullopt;
  const std::string_view wanted = std::string_view(path).substr(prefix.size());
  for (std::size_t index = 0; index < size(); ++index) {
    if (name(index) == wanted) return index;
  }
  return std::nullopt;
}

bool operator==(const ColumnRows& a, const ColumnRows& b) {
  return a.content_ == b.content_ || a.items() == b.items();
}

ColumnChanges changesBetween(const ColumnRows& before, const ColumnRows::Content& after) {
  const ColumnRows::Content& old = before.content();
  ListMatch match =
      old.names == after.names ? matchPositions(old.rows, after.rows) : matchLists(shownNames(old), shownNames(after));
  ColumnChanges changes{.since = old.generation,
                        .steps = listChanges(match, ColumnChanges::kMostSteps),
                        .match = {},
                        .shownAnew = changedRuns(match, old, after)};
  if (!changes.steps) changes.match = std::move(match);
  return changes;
}

}  // namespace dunmere
