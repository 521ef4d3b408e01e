#include "sweeper/byte_count_text.h"

#include <array>
#include <clocale>
#include <string_view>

namespace dunmere {
namespace {

struct Unit {
  std::string_view name;
  std::uint64_t step;      ///< bytes in one unit of the last digit shown
  std::uint64_t perWhole;  ///< steps in one whole unit: 10 to the power of the fraction digits
};

constexpr std::array<Unit, 6> kUnits = {{
    {"KB", 1'000, 1},
    {"MB", 100'000, 10},
    {"GB", 10'000'000, 100},
    {"TB", 10'000'000'000, 100},
    {"PB", 10'000'000'000'000, 100},
    {"EB", 10'000'000'000'000'000, 100},
}};

constexpr std::uint64_t kWholesPerUnit = 1000;

/// `steps` as a decimal number without trailing zeros in its fraction.
std::string decimalText(std::uint64_t steps, std::uint64_t perWhole) {
  std::string text = std::to_string(steps / perWhole);
  std::uint64_t fraction = steps % perWhole;
  if (fraction == 0) return text;
  text += std::localeconv()->decimal_point;
  for (std::uint64_t place = perWhole / 10; fraction != 0; place /= 10) {
    text += static_cast<char>('0' + fraction / place);
    fraction %= place;
  }
  return text;
}

std::string magnitudeText(std::uint64_t magnitude) {
  if (magnitude < kWholesPerUnit) return std::to_string(magnitude) + (magnitude == 1 ? " byte" : " bytes");
  for (const Unit& unit : kUnits) {
    // Integers only: a double holds no more than 2^53 exactly, and the limits between two units must be exact.
    const std::uint64_t steps = (magnitude + unit.step / 2) / unit.step;
    const bool fits = steps < kWholesPerUnit * unit.perWhole;
    if (fits || &unit == &kUnits.back()) return decimalText(steps, unit.perWhole) + ' ' + std::string(unit.name);
  }
  return {};
}

}  // namespace

std::string byteCountText(std::int64_t bytes) {
  if (bytes == 0) return "Zero KB";
  if (bytes > 0) return magnitudeText(static_cast<std::uint64_t>(bytes));
  // Negated as unsigned, because the smallest value has no positive counterpart.
  return '-' + magnitudeText(-static_cast<std::uint64_t>(bytes));
}

}  // namespace dunmere
