#include "engine/listing/list_changes.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace dunmere {
namespace {

constexpr std::size_t kNew = ListMatch::kNew;

/// For each row of the new list whether it can stay where it is: the members of a longest run of rows whose order is
/// the same in both lists (patience sorting).
std::vector<bool> stayingRows(const std::vector<std::size_t>& oldIndex) {
  std::vector<std::size_t> tails;  // per run length, the new row with the least old index that ends such a run
  std::vector<std::size_t> previous(oldIndex.size(), kNew);
  for (std::size_t row = 0; row < oldIndex.size(); ++row) {
    if (oldIndex[row] == kNew) continue;
    const auto endsBefore = [&](std::size_t tail, std::size_t index) { return oldIndex[tail] < index; };
    // Nearly every row goes on with the longest run, which needs no search.
    const bool extends = tails.empty() || endsBefore(tails.back(), oldIndex[row]);
    const auto tail = extends ? tails.end() : std::lower_bound(tails.begin(), tails.end(), oldIndex[row], endsBefore);
    if (tail != tails.begin()) previous[row] = *(tail - 1);
    if (tail == tails.end()) {
      tails.push_back(row);
    } else {
      *tail = row;
    }
  }
  std::vector<bool> stays(oldIndex.size(), false);
  for (std::size_t row = tails.empty() ? kNew : tails.back(); row != kNew; row = previous[row]) stays[row] = true;
  return stays;
}

/// Where each row of the old list stands in the new one; kNew for a row that is gone.
std::vector<std::size_t> newRows(const ListMatch& match) {
  std::vector<std::size_t> newRow(match.oldCount, kNew);
  for (std::size_t row = 0; row < match.oldIndex.size(); ++row) {
    if (match.oldIndex[row] != kNew) newRow[match.oldIndex[row]] = row;
  }
  return newRow;
}

/// Adjoining rows of the old list that are gone, last run first.
std::vector<ListChange> removals(const std::vector<std::size_t>& newRow) {
  std::vector<ListChange> changes;
  for (std::size_t end = newRow.size(); end > 0;) {
    if (newRow[end - 1] != kNew) {
      --end;
      continue;
    }
    std::size_t first = end - 1;
    while (first > 0 && newRow[first - 1] == kNew) --first;
    changes.push_back({ListChange::Kind::remove, first, end - first, 0});
    end = first;
  }
  return changes;
}

/// Appends the moves and insertions: each row goes behind the row before it, front to back. `list` holds the rows that
/// are still there, and stays as each step leaves it. False when that makes more than `atMost` steps.
bool placeRows(const ListMatch& match, std::vector<std::size_t> list, std::vector<ListChange>& changes,
               std::size_t atMost) {
  const std::vector<bool> stays = stayingRows(match.oldIndex);
  if (list.size() - static_cast<std::size_t>(std::ranges::count(stays, true)) > atMost) return false;
  const auto at = [&list](std::size_t position) { return list.begin() + static_cast<std::ptrdiff_t>(position); };
  std::size_t position = 0;  // behind the row before
  for (std::size_t row = 0; row < stays.size() && changes.size() <= atMost;) {
    if (stays[row]) {
      while (list[position] != row) ++position;  // past rows that will be moved away
      ++position;
      ++row;
    } else if (match.oldIndex[row] == kNew) {
      const std::size_t first = row;
      while (row < stays.size() && match.oldIndex[row] == kNew) ++row;
      changes.push_back({ListChange::Kind::insert, position, row - first, first});
      list.insert(at(position), row - first, kNew);
      position += row - first;
    } else {
      const auto from = static_cast<std::size_t>(std::ranges::find(list, row) - list.begin());
      list.erase(at(from));
      if (from < position) --position;
      changes.push_back({ListChange::Kind::move, from, 1, position});
      list.insert(at(position), row);
      ++position;
      ++row;
    }
  }
  return changes.size() <= atMost;
}

}  // namespace

ListMatch matchLists(const std::vector<std::string_view>& oldKeys, const std::vector<std::string_view>& newKeys) {
  std::unordered_map<std::string_view, std::size_t> oldRows;
  oldRows.reserve(oldKeys.size());
  for (std::size_t row = 0; row < oldKeys.size(); ++row) oldRows.emplace(oldKeys[row], row);
  ListMatch match{oldKeys.size(), std::vector<std::size_t>(newKeys.size(), kNew)};
  for (std::size_t row = 0; row < newKeys.size(); ++row) {
    if (const auto found = oldRows.extract(newKeys[row])) match.oldIndex[row] = found.mapped();
  }
  return match;
}

std::optional<std::vector<ListChange>> listChanges(const ListMatch& match, std::size_t atMost) {
  std::vector<std::size_t> list = newRows(match);
  std::vector<ListChange> changes = removals(list);
  std::erase(list, kNew);
  if (!placeRows(match, std::move(list), changes, atMost)) return std::nullopt;
  return changes;
}

}  // namespace dunmere
