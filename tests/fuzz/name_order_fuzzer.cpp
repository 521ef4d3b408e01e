// Any names: their order is one, the sort keeps to it, and a column remembers it rightly.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

#include "engine/listing/row_order.h"
#include "platform/icu/icu_name_order.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

using Names = std::vector<std::string>;

const IcuNameOrder& order() {
  static const IcuNameOrder order("en_US");
  return order;
}

/// Asks for both keys each time, as if nothing had been remembered.
bool isLess(std::string_view a, std::string_view b) {
  return order().sortKey(a) < order().sortKey(b);
}

bool areEquivalent(std::string_view a, std::string_view b) {
  return !isLess(a, b) && !isLess(b, a);
}

void checkTriple(std::string_view a, std::string_view b, std::string_view c) {
  require(!isLess(a, a), "nothing comes before itself");
  require(!(isLess(a, b) && isLess(b, a)), "not each before the other");
  if (isLess(a, b) && isLess(b, c)) require(isLess(a, c), "what comes before is passed on");
  if (areEquivalent(a, b) && areEquivalent(b, c)) require(areEquivalent(a, c), "so is what is alike");
}

std::string withoutCase(std::string name) {
  std::ranges::transform(name, name.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return name;
}

/// Names that are no UTF-8 go by their bytes at last, and so by the case of their letters.
bool isAscii(std::string_view name) {
  return std::ranges::none_of(name, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

void checkSort(const Names& keys) {
  std::vector<std::size_t> expected(keys.size());
  std::iota(expected.begin(), expected.end(), 0U);
  std::ranges::stable_sort(expected, {}, [&keys](std::size_t i) -> const std::string& { return keys[i]; });
  require(orderOfKeys(std::vector<std::string_view>(keys.begin(), keys.end())) == expected,
          "the sort is that of the bytes and stable");
}

void check(std::string_view input) {
  Names names;
  for (const auto part : input | std::views::split('/')) names.emplace_back(part.begin(), part.end());
  checkSort(names);  // as keys, which may be any bytes
  Names keys;
  for (const std::string& name : names) {
    keys.push_back(order().sortKey(name));
    if (isAscii(name)) require(areEquivalent(name, withoutCase(name)), "the case does not count");
  }
  checkSort(keys);
  for (std::size_t i = 2; i < names.size(); ++i) {
    std::array<std::string, 3> three = {names[i - 2], names[i - 1], names[i]};
    std::ranges::sort(three);
    do checkTriple(three[0], three[1], three[2]);
    while (std::ranges::next_permutation(three).found);
  }
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dunmere::test::check(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
