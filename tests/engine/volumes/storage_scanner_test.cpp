#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/print_values.h"

namespace dunmere {
namespace {

constexpr std::nullopt_t kAbsent = std::nullopt;
using Bytes = std::optional<std::int64_t>;

class BootVolumeSnapshot : public testing::Test {
 protected:
  std::optional<VolumeSnapshot> snapshotOf(Bytes total, Bytes available, Bytes availableForImportantUsage = kAbsent) {
    VolumeValues values;
    values.totalBytes = total;
    values.availableBytes = available;
    values.availableForImportantUsageBytes = availableForImportantUsage;
    fileSystem_.setVolumeValues("/home/ada", values);
    return snapshot();
  }
  std::optional<VolumeSnapshot> snapshot() {
    fileSystem_.setHome("/home/ada");
    return StorageScanner::bootVolumeSnapshot(fileSystem_);
  }

  test::MemoryFileSystem fileSystem_;
};

TEST_F(BootVolumeSnapshot, MeasuresTheVolumeOfTheHomeFolderOnce) {
  EXPECT_EQ(snapshotOf(1000, 300), (VolumeSnapshot{1000, 300}));
  EXPECT_EQ(fileSystem_.measuredVolumes(), std::vector<std::string>{"/home/ada"});
}

TEST_F(BootVolumeSnapshot, NoneWhenTheHomeFolderCannotBeRead) {
  fileSystem_.setVolumeValues("/home/ada", std::nullopt);
  EXPECT_EQ(snapshot(), std::nullopt);
}

TEST_F(BootVolumeSnapshot, NoneWithoutACapacity) {
  EXPECT_EQ(snapshotOf(kAbsent, 300), std::nullopt);
  EXPECT_EQ(snapshotOf(0, 300), std::nullopt);
  EXPECT_EQ(snapshotOf(-5, 300), std::nullopt);
}

TEST_F(BootVolumeSnapshot, ACapacityOfOneByteIsACapacity) {
  EXPECT_EQ(snapshotOf(1, 1), (VolumeSnapshot{1, 1}));
}

TEST_F(BootVolumeSnapshot, WhatTheSystemWouldClearCountsAsFree) {
  EXPECT_EQ(snapshotOf(1000, 300, 450), (VolumeSnapshot{1000, 450}));
}

TEST_F(BootVolumeSnapshot, AReportedZeroIsAValue) {
  EXPECT_EQ(snapshotOf(1000, 300, 0), (VolumeSnapshot{1000, 0}));
}

TEST_F(BootVolumeSnapshot, NoFreeSpaceKnownIsZero) {
  EXPECT_EQ(snapshotOf(1000, kAbsent), (VolumeSnapshot{1000, 0}));
}

TEST_F(BootVolumeSnapshot, FreeSpaceIsClampedToTheCapacity) {
  EXPECT_EQ(snapshotOf(1000, 5000), (VolumeSnapshot{1000, 1000}));
  EXPECT_EQ(snapshotOf(1000, kAbsent, 5000), (VolumeSnapshot{1000, 1000}));
}

}  // namespace
}  // namespace dunmere
