// bytesOf: a number of blocks as a number of bytes.
#pragma once

#include <cstdint>
#include <limits>

namespace dunmere {

/// A server may claim any number; what is more than a byte count can hold counts as the largest one. `unitBytes` is at
/// least 1.
constexpr std::int64_t bytesOf(std::uint64_t units, std::uint64_t unitBytes) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(units > kMost / unitBytes ? kMost : units * unitBytes);
}

}  // namespace dunmere
