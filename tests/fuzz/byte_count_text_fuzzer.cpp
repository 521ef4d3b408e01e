// Any number of bytes: its text, read back, is the nearest that the digits shown can say.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "sweeper/byte_count_text.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

using Wide = __int128;

struct Unit {
  std::string_view name;
  Wide bytes;
  std::size_t mostFractionDigits;
};

constexpr Wide kThousand = 1000;
constexpr std::array<Unit, 8> kUnits = {{
    {"byte", 1, 0},
    {"bytes", 1, 0},
    {"KB", kThousand, 0},
    {"MB", kThousand * 1000, 1},
    {"GB", kThousand * 1'000'000, 2},
    {"TB", kThousand * 1'000'000'000, 2},
    {"PB", kThousand * 1'000'000'000'000, 2},
    {"EB", kThousand * 1'000'000'000'000'000, 2},
}};

/// What a text says, in bytes, and how far apart two neighbouring texts of its unit are.
struct Reading {
  Wide bytes = 0;
  Wide step = 1;
};

const Unit& unitNamed(std::string_view name) {
  for (const Unit& unit : kUnits) {
    if (unit.name == name) return unit;
  }
  require(false, "the unit is a known one");
  return kUnits.front();
}

Reading read(std::string_view text) {
  const std::size_t space = text.find(' ');
  require(space != std::string_view::npos, "a unit follows the number");
  const Unit& unit = unitNamed(text.substr(space + 1));
  const std::string_view number = text.substr(0, space);
  const std::size_t point = number.find('.');
  const std::string_view whole = number.substr(0, point);
  const std::string_view fraction = point == std::string_view::npos ? "" : number.substr(point + 1);
  require(!whole.empty() && whole.size() <= 3 && (whole == "0" || whole.front() != '0'), "1 to 3 whole digits");
  require(point == std::string_view::npos || !fraction.empty(), "digits follow the point");
  require(fraction.size() <= unit.mostFractionDigits && !fraction.ends_with('0'), "no more digits than needed");

  Reading reading{.step = unit.bytes};
  for (std::size_t digit = 0; digit < unit.mostFractionDigits; ++digit) reading.step /= 10;
  Wide place = unit.bytes;
  for (const char digit : whole) reading.bytes = reading.bytes * 10 + (digit - '0') * unit.bytes;
  for (const char digit : fraction) reading.bytes += (digit - '0') * (place /= 10);
  for (const char digit : std::string(whole) + std::string(fraction)) {
    require(std::isdigit(static_cast<unsigned char>(digit)) != 0, "digits only");
  }
  return reading;
}

Wide valueOf(std::int64_t bytes) {
  std::string text = byteCountText(bytes);
  if (bytes == 0) {
    require(text == "Zero KB", "nothing has a word of its own");
    return 0;
  }
  require(text.starts_with('-') == (bytes < 0), "the sign is that of the number");
  if (bytes < 0) text.erase(0, 1);
  const Wide magnitude = bytes < 0 ? -Wide{bytes} : Wide{bytes};
  const Reading reading = read(text);
  const Wide error = magnitude > reading.bytes ? magnitude - reading.bytes : reading.bytes - magnitude;
  require(2 * error <= reading.step, "no other text of this unit is nearer");
  return bytes < 0 ? -reading.bytes : reading.bytes;
}

void check(std::int64_t bytes) {
  const Wide value = valueOf(bytes);
  if (bytes != std::numeric_limits<std::int64_t>::max()) require(valueOf(bytes + 1) >= value, "more reads as more");
  if (bytes > 0) require(byteCountText(-bytes) == "-" + byteCountText(bytes), "less than nothing mirrors more");
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::uint64_t bytes = 0;  // the lowest byte first, so that a short input is a small number
  for (std::size_t i = 0; i < std::min(size, sizeof bytes); ++i) bytes |= std::uint64_t{data[i]} << (8 * i);
  dunmere::test::check(static_cast<std::int64_t>(bytes));
  return 0;
}
