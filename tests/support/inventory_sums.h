// wrongSum: whether what an inventory says of its folders adds up.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/sweep_inventory.h"

namespace dunmere::test {

/// The first folder whose bytes are not the sum of its children's, told with both numbers; empty when all is
/// consistent, the root's sum and the total included. Goes by the order of the entries, each folder before what it
/// holds, so that a name which a folder was read to hold twice stands for two entries.
inline std::string wrongSum(const SweepInventory& inventory) {
  struct Entry {
    std::string key;
    std::int64_t bytes = 0;
    std::int64_t sum = 0;
    bool isFolder = false;
  };
  std::string wrong;
  const auto compare = [&wrong](std::string_view what, std::int64_t is, std::int64_t sum) {
    if (is != sum && wrong.empty())
      wrong = std::string(what) + " is " + std::to_string(is) + ", not " + std::to_string(sum);
  };
  std::vector<Entry> open;
  const auto closeUntilParentOf = [&](std::string_view key) {
    const std::string_view parent = key.substr(0, key.rfind('/'));
    while (!open.empty() && open.back().key != (parent.empty() ? "/" : parent)) {
      if (open.back().isFolder) compare(open.back().key, open.back().bytes, open.back().sum);
      open.pop_back();
    }
  };
  inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) {
    if (key != inventory.rootPath) closeUntilParentOf(key);
    if (!open.empty()) {
      open.back().sum += bytes;
      open.back().isFolder = true;
    } else if (key != inventory.rootPath) {
      compare(key, bytes, 0);  // in no folder that was counted
    }
    open.push_back({std::string(key), bytes});
  });
  closeUntilParentOf("nowhere/");
  compare("the total", inventory.totalFileBytes, inventory.pathBytes.find(inventory.rootPath).value_or(0));
  return wrong;
}

}  // namespace dunmere::test
