#include "engine/listing/list_changes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace dunmere {
namespace {

using Keys = std::vector<std::string_view>;
using Changes = std::vector<ListChange>;
using Kind = ListChange::Kind;

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

Changes changesBetween(const Keys& before, const Keys& after) {
  return listChanges(matchLists(before, after), kAnyNumber).value();
}

/// What a list becomes when the steps are done to it one after the other.
Keys applied(Keys list, const Changes& changes, const Keys& after) {
  for (const ListChange& change : changes) {
    const auto at = list.begin() + static_cast<std::ptrdiff_t>(change.position);
    const auto count = static_cast<std::ptrdiff_t>(change.count);
    const auto target = static_cast<std::ptrdiff_t>(change.target);
    switch (change.kind) {
      case Kind::remove:
        list.erase(at, at + count);
        break;
      case Kind::insert:
        list.insert(at, after.begin() + target, after.begin() + target + count);
        break;
      case Kind::move: {
        const std::string_view key = *at;
        list.erase(at);
        list.insert(list.begin() + target, key);
        break;
      }
    }
  }
  return list;
}

std::size_t countOf(const Changes& changes, Kind kind) {
  return static_cast<std::size_t>(std::ranges::count(changes, kind, &ListChange::kind));
}

TEST(ListChanges, EqualListsNeedNone) {
  EXPECT_TRUE(changesBetween({"a", "b"}, {"a", "b"}).empty());
}

TEST(ListChanges, AdjoiningRowsAreInsertedInOneStep) {
  EXPECT_EQ(changesBetween({"a", "d"}, {"a", "b", "c", "d"}), (Changes{{Kind::insert, 1, 2, 1}}));
}

TEST(ListChanges, AdjoiningRowsAreRemovedInOneStepAndLaterRunsFirst) {
  EXPECT_EQ(changesBetween({"a", "b", "c", "d", "e"}, {"c", "d"}),
            (Changes{{Kind::remove, 4, 1, 0}, {Kind::remove, 0, 2, 0}}));
}

TEST(ListChanges, ARowThatClimbsIsMovedOnce) {
  EXPECT_EQ(changesBetween({"a", "b", "c", "d"}, {"d", "a", "b", "c"}), (Changes{{Kind::move, 3, 1, 0}}));
}

TEST(ListChanges, ARowThatSinksIsMovedOnce) {
  EXPECT_EQ(changesBetween({"a", "b", "c", "d"}, {"b", "c", "d", "a"}), (Changes{{Kind::move, 0, 1, 3}}));
}

TEST(ListChanges, EverythingBecomesSomethingElse) {
  EXPECT_EQ(changesBetween({"a", "b"}, {"c", "d", "e"}), (Changes{{Kind::remove, 0, 2, 0}, {Kind::insert, 0, 3, 0}}));
}

TEST(ListChanges, MoreStepsThanAllowedGiveNone) {
  const ListMatch match = matchLists({"a", "b", "c"}, {"c", "b", "a"});
  EXPECT_EQ(listChanges(match, 1), std::nullopt);
  EXPECT_EQ(listChanges(match, 2)->size(), 2u);
}

TEST(ListChanges, AKeyThatStandsTwiceIsMatchedOnce) {
  const Keys before = {"a", "b", "a", "c"};
  const Keys after = {"c", "a", "b", "b"};
  EXPECT_EQ(applied(before, changesBetween(before, after), after), after);
}

/// Length of the longest run of surviving rows in unchanged order, found the slow and obvious way.
std::size_t longestStayingRun(const std::vector<std::size_t>& oldIndex) {
  std::vector<std::size_t> longest(oldIndex.size(), 0);
  std::size_t best = 0;
  for (std::size_t row = 0; row < oldIndex.size(); ++row) {
    if (oldIndex[row] == ListMatch::kNew) continue;
    longest[row] = 1;
    for (std::size_t earlier = 0; earlier < row; ++earlier) {
      if (longest[earlier] > 0 && oldIndex[earlier] < oldIndex[row])
        longest[row] = std::max(longest[row], longest[earlier] + 1);
    }
    best = std::max(best, longest[row]);
  }
  return best;
}

TEST(ListChanges, AnyListBecomesAnyOtherWithTheFewestMoves) {
  std::mt19937 random(20260112);
  for (int round = 0; round < 3000; ++round) {
    std::vector<std::string> names;
    for (int name = 0; name < 24; ++name) names.push_back("name" + std::to_string(name));
    std::ranges::shuffle(names, random);
    const Keys before(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(random() % names.size()));
    std::vector<std::string> other = names;
    // Half of the rounds disturb the order a little, half a lot.
    if (round % 2 == 0) {
      std::swap(other[random() % other.size()], other[random() % other.size()]);
      other.erase(other.begin() + static_cast<std::ptrdiff_t>(random() % other.size()));
    } else {
      std::ranges::shuffle(other, random);
    }
    const Keys after(other.begin(), other.begin() + static_cast<std::ptrdiff_t>(random() % other.size()));

    const ListMatch match = matchLists(before, after);
    const Changes changes = listChanges(match, kAnyNumber).value();
    ASSERT_EQ(applied(before, changes, after), after) << "round " << round;
    const auto survivors = static_cast<std::size_t>(
        std::ranges::count_if(match.oldIndex, [](std::size_t index) { return index != ListMatch::kNew; }));
    ASSERT_LE(countOf(changes, Kind::move), survivors - longestStayingRun(match.oldIndex)) << "round " << round;
  }
}

}  // namespace
}  // namespace dunmere
