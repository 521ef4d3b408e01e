// inventorySums: whether what an inventory says of its folders adds up.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/sweep_inventory.h"

namespace dunmere::test {

/// The first folder whose bytes are not the sum of its children's, told with both numbers; empty when all is
/// consistent, the root's sum and the total included.
inline std::string wrongSum(const SweepInventory& inventory) {
  std::unordered_map<std::string, std::int64_t> sums;
  inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) {
    if (key != inventory.rootPath) sums[std::string(key.substr(0, key.rfind('/')))] += bytes;
  });
  std::string wrong;
  const auto compare = [&wrong](std::string_view what, std::int64_t is, std::int64_t sum) {
    if (is != sum && wrong.empty())
      wrong = std::string(what) + " is " + std::to_string(is) + ", not " + std::to_string(sum);
  };
  inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) {
    if (const auto sum = sums.find(std::string(key)); sum != sums.end()) compare(key, bytes, sum->second);
  });
  compare("the total", inventory.totalFileBytes, inventory.pathBytes.find(inventory.rootPath).value_or(0));
  return wrong;
}

}  // namespace dunmere::test
