// firstSeed: where a randomized test begins, told on the screen so that a failure can be repeated.
#pragma once

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

}  // namespace dunmere::test
