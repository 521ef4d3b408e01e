#include "engine/listing/key_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace dunmere {
namespace {

using Keys = std::vector<std::string>;
using Positions = std::vector<std::size_t>;

Positions orderOf(const Keys& keys) {
  KeyOrder order;
  order.reserve(keys.size());
  for (const std::string& key : keys) order.add(key);
  return order.sorted();
}

Positions plainOrderOf(const Keys& keys) {
  Positions positions(keys.size());
  std::iota(positions.begin(), positions.end(), 0U);
  std::ranges::stable_sort(positions, {},
                           [&keys](std::size_t position) -> const std::string& { return keys[position]; });
  return positions;
}

/// Short keys of few different bytes, so that beginnings, whole keys and zero bytes often coincide.
Keys randomKeys(std::mt19937& random, const std::string& beginning) {
  constexpr char kBytes[] = {'\0', '\1', 'a', '\x7f', '\x80', '\xff'};
  std::uniform_int_distribution<std::size_t> anyByte(0, std::size(kBytes) - 1);
  std::uniform_int_distribution<int> anyLength(0, 11);
  Keys keys(200, beginning);
  for (std::string& key : keys) {
    for (int length = anyLength(random); length > 0; --length) key += kBytes[anyByte(random)];
  }
  return keys;
}

TEST(KeyOrder, OfNothingIsEmpty) {
  EXPECT_EQ(orderOf({}), Positions());
}

TEST(KeyOrder, BytesOrderAsUnsignedNumbers) {
  EXPECT_EQ(orderOf({"b", "\xff", "a", "\x80", "\x01"}), (Positions{4, 2, 0, 3, 1}));
}

TEST(KeyOrder, AKeyComesBeforeItsContinuations) {
  EXPECT_EQ(orderOf({"abcdefghij", "abc", "", "abcdefgh"}), (Positions{2, 1, 3, 0}));
}

TEST(KeyOrder, AMissingByteComesBeforeAZeroByte) {
  using namespace std::string_literals;
  EXPECT_EQ(orderOf({"a\0\0"s, "a\0"s, "a"s, "a\0a"s}), (Positions{2, 1, 0, 3}));
}

TEST(KeyOrder, EqualKeysKeepTheOrderOfAdding) {
  EXPECT_EQ(orderOf({"same", "a", "same", "z", "same"}), (Positions{1, 0, 2, 4, 3}));
}

TEST(KeyOrder, WhatAllKeysShareDoesNotDecide) {
  const std::string shared(500, 'x');
  EXPECT_EQ(orderOf({shared + "2", shared + "10", shared, shared + "1"}), (Positions{2, 3, 1, 0}));
  EXPECT_EQ(orderOf({shared, shared}), (Positions{0, 1}));
}

TEST(KeyOrder, IsThatOfAPlainSort) {
  std::mt19937 random(7);
  for (int round = 0; round < 100; ++round) {
    const Keys keys = randomKeys(random, round % 2 == 0 ? "" : "shared beginning");
    EXPECT_EQ(orderOf(keys), plainOrderOf(keys)) << "round " << round;
  }
}

}  // namespace
}  // namespace dunmere
