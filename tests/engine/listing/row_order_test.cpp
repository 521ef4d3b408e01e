#include "engine/listing/row_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <new>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/memory_file_system.h"

namespace dunmere {
namespace {

using Keys = std::vector<std::string>;
using Positions = std::vector<std::size_t>;

Positions orderOf(const Keys& keys) {
  return orderOfKeys(std::vector<std::string_view>(keys.begin(), keys.end()));
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

TEST(OrderOfKeys, OfNothingIsEmpty) {
  EXPECT_EQ(orderOf({}), Positions());
}

TEST(OrderOfKeys, BytesOrderAsUnsignedNumbers) {
  EXPECT_EQ(orderOf({"b", "\xff", "a", "\x80", "\x01"}), (Positions{4, 2, 0, 3, 1}));
}

TEST(OrderOfKeys, AKeyComesBeforeItsContinuations) {
  EXPECT_EQ(orderOf({"abcdefghij", "abc", "", "abcdefgh"}), (Positions{2, 1, 3, 0}));
}

TEST(OrderOfKeys, AMissingByteComesBeforeAZeroByte) {
  using namespace std::string_literals;
  EXPECT_EQ(orderOf({"a\0\0"s, "a\0"s, "a"s, "a\0a"s}), (Positions{2, 1, 0, 3}));
}

TEST(OrderOfKeys, EqualKeysStayInTheirOrder) {
  EXPECT_EQ(orderOf({"same", "a", "same", "z", "same"}), (Positions{1, 0, 2, 4, 3}));
}

TEST(OrderOfKeys, WhatAllKeysShareDoesNotDecide) {
  const std::string shared(500, 'x');
  EXPECT_EQ(orderOf({shared + "2", shared + "10", shared, shared + "1"}), (Positions{2, 3, 1, 0}));
  EXPECT_EQ(orderOf({shared, shared}), (Positions{0, 1}));
}

TEST(OrderOfKeys, IsThatOfAPlainSort) {
  std::mt19937 random(7);
  for (int round = 0; round < 100; ++round) {
    const Keys keys = randomKeys(random, round % 2 == 0 ? "" : "shared beginning");
    EXPECT_EQ(orderOf(keys), plainOrderOf(keys)) << "round " << round;
  }
}

class ManyNames : public testing::Test {
 protected:
  ManyNames() {
    for (int i = 0; i < 20'000; ++i) names_.add("name " + std::to_string(i * 7'919 % 20'000));
    for (RowPosition i = 0; i < names_.size(); ++i) rows_.push_back({.sizeBytes = 5, .position = i});
    changed_.resize(rows_.size());
    std::iota(changed_.begin(), changed_.end(), 0U);
    order_.begin(rows_.size());
  }

  EntryNames names_;
  std::vector<ColumnRow> rows_;
  std::vector<RowPosition> changed_;
  RowOrder order_;
};

TEST_F(ManyNames, GetTheirKeysOnSeveralThreads) {
  /// Lets nobody go on before a second one has come.
  class MeetingFileSystem : public test::MemoryFileSystem {
   public:
    std::string nameSortKey(std::string_view name) override {
      for (std::size_t come = 0; come < std::min(2U, std::thread::hardware_concurrency()); std::this_thread::yield()) {
        const std::lock_guard lock(mutex_);
        threads_.insert(std::this_thread::get_id());
        come = threads_.size();
      }
      return MemoryFileSystem::nameSortKey(name);
    }

   private:
    std::mutex mutex_;
    std::set<std::thread::id> threads_;
  };
  MeetingFileSystem fileSystem;
  order_.update(fileSystem, names_, rows_, changed_);
  EXPECT_TRUE(
      std::ranges::is_sorted(order_.positions(), {}, [this](RowPosition row) { return std::string(names_[row]); }));
}

TEST_F(ManyNames, FailWhenOneKeyCannotBeMade) {
  class FailingFileSystem : public test::MemoryFileSystem {
   public:
    std::string nameSortKey(std::string_view name) override {
      if (name == failing) throw std::bad_alloc();
      return MemoryFileSystem::nameSortKey(name);
    }
    std::string_view failing;
  };
  FailingFileSystem fileSystem;
  for (const std::size_t position : {std::size_t{0}, names_.size() - 1}) {
    fileSystem.failing = names_[position];
    EXPECT_THROW(order_.update(fileSystem, names_, rows_, changed_), std::bad_alloc);
  }
}

}  // namespace
}  // namespace dunmere
