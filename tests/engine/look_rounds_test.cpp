#include "engine/look_rounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <vector>

namespace dunmere {
namespace {

using std::chrono_literals::operator""ms;

std::size_t countOf(const LookRounds& rounds, std::size_t rows) {
  std::size_t count = 0;
  for (std::size_t row = 0; row < rows; ++row) count += rounds.includes(row) ? 1 : 0;
  return count;
}

TEST(LookRounds, AShareOfTheRoundIsAShareOfTheRows) {
  LookRounds rounds;
  rounds.begin(1000, 0ms);
  rounds.goOn(35ms);
  EXPECT_EQ(countOf(rounds, 1000), 100U);
  rounds.goOn(42ms);
  EXPECT_EQ(countOf(rounds, 1000), 20U);
}

TEST(LookRounds, AfterAWholeRoundAllRowsAreDue) {
  LookRounds rounds;
  rounds.begin(1000, 0ms);
  rounds.goOn(350ms);
  EXPECT_EQ(countOf(rounds, 1000), 1000U);
  rounds.goOn(100'000ms);
  EXPECT_EQ(countOf(rounds, 1000), 1000U);
}

TEST(LookRounds, WithoutTimePassingOneRowIsDue) {
  LookRounds rounds;
  rounds.begin(3, 7ms);
  for (std::size_t row : {0, 1, 2, 0}) {
    rounds.goOn(7ms);
    EXPECT_EQ(countOf(rounds, 3), 1U);
    EXPECT_TRUE(rounds.includes(row));
  }
}

TEST(LookRounds, OfNoRowsNeverEnds) {
  LookRounds rounds;
  rounds.begin(0, 0ms);
  rounds.goOn(350ms);
}

// However the time goes on, each row is due again when a round has passed.
TEST(LookRounds, NoRowIsOlderThanARound) {
  std::mt19937 random(7);
  for (const std::size_t rows : {1UL, 2UL, 7UL, 100UL, 12'345UL}) {
    LookRounds rounds;
    FileSystem::Instant now = 5ms;
    rounds.begin(rows, now);
    std::vector<FileSystem::Instant> last(rows, now);
    for (int step = 0; step < 300; ++step) {
      const FileSystem::Instant passed = std::chrono::milliseconds(random() % 40);
      now += passed;
      rounds.goOn(now);
      for (std::size_t row = 0; row < rows; ++row)
        if (rounds.includes(row)) last[row] = now;
      const auto oldest = std::ranges::min_element(last);
      ASSERT_LE(now - *oldest, LookRounds::kRound + 40ms) << "of " << rows << " rows, number " << oldest - last.begin();
    }
  }
}

}  // namespace
}  // namespace dunmere
