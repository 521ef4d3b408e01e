// byteCountText: a byte count as people read it, "1.23 GB".
#pragma once

#include <cstdint>
#include <string>

namespace dunmere {

/// Decimal steps of 1000; bytes and KB without fraction, MB with at most one digit, larger units with at most two;
/// trailing zeros dropped; rounded half away from zero, and never up to "1,000" of a unit: the next unit is taken. 0 is
/// "Zero KB". The decimal separator is the C locale setting's (LC_NUMERIC). Any thread, as long as nobody changes the
/// locale meanwhile.
std::string byteCountText(std::int64_t bytes);

}  // namespace dunmere
