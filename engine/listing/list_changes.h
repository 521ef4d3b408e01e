// listChanges: the smallest set of removals, moves and insertions that turns one list of unique keys into another.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace dunmere {

/// One step. Positions are those in the list that the steps before it have made.
struct ListChange {
  enum class Kind { remove, move, insert };

  Kind kind = Kind::remove;
  std::size_t position = 0;  ///< of the first row that is removed or inserted, or of the row to be moved
  std::size_t count = 0;     ///< of rows; 1 for a move
  std::size_t target = 0;    ///< move: the position afterwards; insert: index of the first row in the new list

  friend bool operator==(const ListChange&, const ListChange&) = default;
};

/// Which row of the old list each row of the new list was.
struct ListMatch {
  static constexpr std::size_t kNew = static_cast<std::size_t>(-1);

  std::size_t oldCount = 0;
  std::vector<std::size_t> oldIndex;  ///< one per row of the new list; kNew for a row that was not there
};

/// Matches the rows of two lists by key. A key that stands twice in a list (a folder may change while it is read)
/// matches once; its other rows count as gone or new.
ListMatch matchLists(const std::vector<std::string_view>& oldKeys, const std::vector<std::string_view>& newKeys);

/// Removals from the back, then moves and insertions from the front. Adjoining rows are removed and inserted in one
/// step; as many rows as possible stay where they are, each of the others is moved once. None when more than `atMost`
/// steps would be needed.
std::optional<std::vector<ListChange>> listChanges(const ListMatch& match, std::size_t atMost);

}  // namespace dunmere
