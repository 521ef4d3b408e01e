#include "engine/sweeper_values.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <type_traits>
#include <vector>

#include "tests/support/print_values.h"

namespace dunmere {
namespace {

const SweeperVolume kVolume{FileUrl("/Volumes/Data"), "Data", 1000, 400};
const SweeperItem kItem{FileUrl("/vol/photos"), "photos", true, 4096, false, false};

template <typename Value>
std::size_t hashOf(const Value& value) {
  return std::hash<Value>{}(value);
}

std::vector<SweeperVolume> volumesThatDifferInOneField() {
  return {{FileUrl("/Volumes/Else"), "Data", 1000, 400},
          {FileUrl("/Volumes/Data"), "Else", 1000, 400},
          {FileUrl("/Volumes/Data"), "Data", 1001, 400},
          {FileUrl("/Volumes/Data"), "Data", 1000, 401}};
}

std::vector<SweeperItem> itemsThatDifferInOneField() {
  return {{FileUrl("/vol/else"), "photos", true, 4096, false, false},
          {FileUrl("/vol/photos"), "else", true, 4096, false, false},
          {FileUrl("/vol/photos"), "photos", false, 4096, false, false},
          {FileUrl("/vol/photos"), "photos", true, 4097, false, false},
          {FileUrl("/vol/photos"), "photos", true, 4096, true, false},
          {FileUrl("/vol/photos"), "photos", true, 4096, false, true}};
}

TEST(SweeperVolume, DifferentFreeSpaceIsAnotherValueOfOneIdentity) {
  SweeperVolume later = kVolume;
  later.freeBytes = 300;
  EXPECT_EQ(later.id(), kVolume.id());
  EXPECT_NE(later, kVolume);
}

TEST(SweeperVolume, EqualityAndHashTakeInEveryField) {
  EXPECT_EQ(SweeperVolume(kVolume), kVolume);
  EXPECT_EQ(hashOf(SweeperVolume(kVolume)), hashOf(kVolume));
  for (const SweeperVolume& other : volumesThatDifferInOneField()) {
    EXPECT_NE(other, kVolume);
    EXPECT_NE(hashOf(other), hashOf(kVolume));
  }
}

TEST(SweeperVolume, IdentityIsThePathWithoutTrailingSlash) {
  EXPECT_EQ((SweeperVolume{FileUrl("/Volumes/Data/"), "Data", 1, 0}.id()), "/Volumes/Data");
  EXPECT_EQ((SweeperVolume{FileUrl("/"), "Data", 1, 0}.id()), "/");
}

TEST(SweeperItem, DifferentSizeIsAnotherValueOfOneIdentity) {
  SweeperItem grown = kItem;
  grown.sizeBytes = 8192;
  EXPECT_EQ(grown.id(), kItem.id());
  EXPECT_NE(grown, kItem);
}

TEST(SweeperItem, EqualityAndHashTakeInEveryField) {
  EXPECT_EQ(SweeperItem(kItem), kItem);
  EXPECT_EQ(hashOf(SweeperItem(kItem)), hashOf(kItem));
  for (const SweeperItem& other : itemsThatDifferInOneField()) {
    EXPECT_NE(other, kItem);
    EXPECT_NE(hashOf(other), hashOf(kItem));
  }
}

TEST(SweeperItem, HashTellsEqualFieldsAtDifferentPlacesApart) {
  const SweeperItem folderOnly{FileUrl("/a"), "a", true, 0, false, false};
  const SweeperItem linkOnly{FileUrl("/a"), "a", false, 0, false, true};
  EXPECT_NE(hashOf(folderOnly), hashOf(linkOnly));
}

TEST(SweeperItem, IdentityIsThePathAlone) {
  for (const SweeperItem& other : itemsThatDifferInOneField()) {
    EXPECT_EQ(other.id() == kItem.id(), other.url == kItem.url);
  }
  EXPECT_EQ(kItem.id(), "/vol/photos");
}

// The main thread gets these from scan threads: as plain values they share nothing that could change.
static_assert(std::is_copy_constructible_v<SweeperItem> && std::is_nothrow_move_constructible_v<SweeperItem>);
static_assert(std::is_copy_constructible_v<SweeperVolume> && std::is_nothrow_move_constructible_v<SweeperVolume>);

}  // namespace
}  // namespace dunmere
