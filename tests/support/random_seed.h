// Where a randomized test begins, told on the screen so that a failure can be repeated, and how long it goes on.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace dunmere::test {

/// A new seed each time, or the one in the environment variable DUNMERE_TEST_SEED.
inline std::uint64_t firstSeed() {
  const char* const wanted = std::getenv("DUNMERE_TEST_SEED");
  const std::uint64_t seed = wanted != nullptr ? std::stoull(wanted) : std::random_device{}();
  std::cout << "first seed " << seed << " (DUNMERE_TEST_SEED=" << seed << " repeats it)" << std::endl;
  return seed;
}

/// How many rounds, or entries: `usual` ones, or of these the per cent in the environment variable
/// DUNMERE_TEST_PERCENT, which may be less where everything is slow, or more than a hundred. At least one.
inline std::int64_t rounds(std::int64_t usual) {
  const char* const percent = std::getenv("DUNMERE_TEST_PERCENT");
  return percent == nullptr ? usual : std::max<std::int64_t>(1, usual * std::stoll(percent) / 100);
}

}  // namespace dunmere::test
