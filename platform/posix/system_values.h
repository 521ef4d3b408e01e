// What system calls give, as the engine's values.
#pragma once

#include <cstdint>
#include <expected>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

#include "engine/sweep_error.h"

namespace dunmere {

/// An errno value as an error code.
inline std::error_code systemCode(int number) {
  return {number, std::generic_category()};
}

/// The same as the result of a function that failed.
inline std::unexpected<std::error_code> systemFailure(int number) {
  return std::unexpected(systemCode(number));
}

/// The failure to open or read the folder or volume at `url`; `number` is an errno value.
inline std::unexpected<SweepError> openFailure(FileUrl url, int number) {
  return std::unexpected(SweepError{SweepAttempt::openFolder, std::move(url), systemCode(number), {}});
}

/// A number of blocks in bytes. A server may claim any number; what is more than a byte count can hold counts as the
/// largest one.
constexpr std::int64_t bytesOf(std::uint64_t units, std::uint64_t unitBytes) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  const bool isTooMany = unitBytes > 0 && units > kMost / unitBytes;
  return static_cast<std::int64_t>(isTooMany ? kMost : units * unitBytes);
}

}  // namespace dunmere
