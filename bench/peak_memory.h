// peakRssBytes: the most memory that this process had at a time.
#pragma once

#include <cstdint>
#include <optional>

namespace dunmere {

/// The largest resident size of this process so far, in bytes; none when the system does not tell. The build picks the
/// implementation.
std::optional<std::int64_t> peakRssBytes();

}  // namespace dunmere
