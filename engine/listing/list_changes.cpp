#include "engine/listing/list_changes.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace dunmere {
namespace {

constexpr std::size_t kNew = ListMatch::kNew;

/// The rows of the new list that can stay where they are, in ascending order: a longest run of rows whose order is the
/// same in both lists (patience sorting).
std::vector<std::size_t> stayingRows(const std::vector<std::size_t>& oldIndex) {
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
  std::vector<std::size_t> staying(tails.size());
  std::size_t row = tails.empty() ? kNew : tails.back();
  for (auto slot = staying.rbegin(); slot != staying.rend(); ++slot, row = previous[row]) *slot = row;
  return staying;
}

/// Adjoining rows of the old list that are gone, last run first.
std::vector<ListChange> removals(const ListMatch& match) {
  std::vector<bool> survives(match.oldCount, false);
  for (const std::size_t index : match.oldIndex) {
    if (index != kNew) survives[index] = true;
  }
  std::vector<ListChange> changes;
  for (std::size_t end = match.oldCount; end > 0;) {
    if (survives[end - 1]) {
      --end;
      continue;
    }
    std::size_t first = end - 1;
    while (first > 0 && !survives[first - 1]) --first;
    changes.push_back({ListChange::Kind::remove, first, end - first, 0});
    end = first;
  }
  return changes;
}

/// Moves and inserts rows, front to back, after the removals. Between two staying rows first those stand that are still
/// to be moved away, in their old order, then those that have come, in their new order.
class Placement {
 public:
  Placement(const ListMatch& match, std::vector<std::size_t> staying) : match_(match), staying_(std::move(staying)) {
    auto stays = staying_.begin();
    for (std::size_t row = 0; row < match.oldIndex.size(); ++row) {
      if (stays != staying_.end() && *stays == row) {
        ++stays;
        continue;
      }
      coming_.push_back(row);
      if (match.oldIndex[row] != kNew) leaving_.push_back(match.oldIndex[row]);
    }
  }

  /// Appends the steps; false when that makes more than `atMost` of them.
  bool append(std::vector<ListChange>& changes, std::size_t atMost) {
    if (leaving_.size() > atMost) return false;
    std::ranges::sort(leaving_);
    for (const std::size_t row : coming_) {
      while (passed_ < staying_.size() && staying_[passed_] < row) ++passed_;
      if (match_.oldIndex[row] != kNew) {
        appendMove(changes, row);
      } else if (row > 0 && match_.oldIndex[row - 1] == kNew) {
        ++changes.back().count;
      } else {
        changes.push_back({ListChange::Kind::insert, target(row), 1, row});
      }
      if (changes.size() > atMost) return false;
    }
    return true;
  }

 private:
  void appendMove(std::vector<ListChange>& changes, std::size_t row) {
    const std::size_t from = position(row);
    std::erase(leaving_, match_.oldIndex[row]);
    changes.push_back({ListChange::Kind::move, from, 1, target(row)});
  }

  std::size_t leavingBefore(std::size_t oldIndex) const {
    return static_cast<std::size_t>(std::ranges::lower_bound(leaving_, oldIndex) - leaving_.begin());
  }

  /// Where a row comes to stand: behind all new rows before it, before the next one that stays.
  std::size_t target(std::size_t row) const {
    return row + leavingBefore(passed_ < staying_.size() ? match_.oldIndex[staying_[passed_]] : match_.oldCount);
  }

  /// Where a row that is still to be moved stands.
  std::size_t position(std::size_t row) const {
    const std::size_t oldIndex = match_.oldIndex[row];
    const auto next = std::ranges::lower_bound(staying_, oldIndex, {}, [&](auto r) { return match_.oldIndex[r]; });
    const auto stayingBefore = static_cast<std::size_t>(next - staying_.begin());
    std::size_t before = stayingBefore;
    if (stayingBefore > passed_) {
      before += row - passed_;  // all that have come
    } else if (stayingBefore > 0) {
      before = *(next - 1) + 1;
    }
    return before + leavingBefore(oldIndex);
  }

  const ListMatch& match_;
  const std::vector<std::size_t> staying_;
  std::vector<std::size_t> coming_;   // new rows that do not stay
  std::vector<std::size_t> leaving_;  // old indices of rows that are still to be moved
  std::size_t passed_ = 0;            // staying rows before the one that is placed
};

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
  std::vector<ListChange> changes = removals(match);
  if (changes.size() > atMost || !Placement(match, stayingRows(match.oldIndex)).append(changes, atMost))
    return std::nullopt;
  return changes;
}

}  // namespace dunmere
