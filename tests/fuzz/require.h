// require: ends a fuzzing run with what was found to be wrong.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace dunmere::test {

/// Aborts unless `holds`: the fuzzer then keeps the input.
inline void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

}  // namespace dunmere::test
