#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/print_values.h"

namespace dunmere {
namespace {

using Bytes = std::optional<std::int64_t>;
using Strings = std::vector<std::string>;

VolumeValues valuesOf(std::optional<std::string> name, Bytes total, Bytes available) {
  VolumeValues values;
  values.name = std::move(name);
  values.totalBytes = total;
  values.availableBytes = available;
  return values;
}

class VolumeDiscovery : public testing::Test {
 protected:
  void SetUp() override {
    fileSystem_.setHome("/home/ada");
    fileSystem_.setVolumeValues("/home/ada", valuesOf("Boot", 900, 90));
  }

  void mount(const std::string& path, std::optional<VolumeValues> values) {
    mounted_.emplace_back(path);
    fileSystem_.setVolumeValues(path, std::move(values));
    fileSystem_.setMountedVolumes(mounted_);
  }
  void mountNamed(const std::string& path, const std::string& name) { mount(path, valuesOf(name, 1000, 400)); }

  std::vector<SweeperVolume> listed() { return DiskSweeperScan::listVolumes(fileSystem_); }
  Strings listedNames() {
    Strings names;
    for (const SweeperVolume& volume : listed()) names.push_back(volume.name);
    return names;
  }
  /// Whether a volume is offered, next to one that always is.
  bool isListed(const std::string& path, const VolumeValues& values) {
    mounted_.clear();
    mountNamed("/always", "always");
    mount(path, values);
    return listed().size() == 2;
  }
  bool isListed(const std::string& path, const std::string& name) { return isListed(path, valuesOf(name, 1000, 400)); }
  bool wasMeasured(const std::string& path) const {
    const Strings measured = fileSystem_.measuredVolumes();
    return std::ranges::find(measured, path) != measured.end();
  }

  test::MemoryFileSystem fileSystem_;
  std::vector<FileUrl> mounted_;
};

TEST_F(VolumeDiscovery, AVolumeCarriesMountPointNameAndCapacity) {
  mount("/media/data", valuesOf("Data", 1000, 400));
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/media/data"), "Data", 1000, 400}}));
}

TEST_F(VolumeDiscovery, MoreThanEightVolumesAreAllListed) {
  for (int i = 0; i < 20; ++i) mountNamed("/media/" + std::to_string(i), "Disk");
  EXPECT_EQ(listed().size(), 20u);
}

// Order.

TEST_F(VolumeDiscovery, NamesOrderWithoutRegardToCaseCapacityOrMountOrder) {
  mount("/media/1", valuesOf("gamma", 9000, 1));
  mount("/media/2", valuesOf("alpha", 10, 1));
  mount("/media/3", valuesOf("Beta", 500, 1));
  EXPECT_EQ(listedNames(), (Strings{"alpha", "Beta", "gamma"}));
}

TEST_F(VolumeDiscovery, TheBootVolumeHasNoSpecialPlace) {
  mountNamed("/", "Macintosh HD");
  mountNamed("/media/a", "Archive");
  mountNamed("/media/z", "Zip");
  EXPECT_EQ(listedNames(), (Strings{"Archive", "Macintosh HD", "Zip"}));
}

TEST_F(VolumeDiscovery, NamesThatOrderAlikeKeepTheMountOrderAndAreNotMerged) {
  mountNamed("/media/2", "Data");
  mountNamed("/media/1", "DATA");
  mountNamed("/media/3", "data");
  EXPECT_EQ(listedNames(), (Strings{"Data", "DATA", "data"}));
  EXPECT_EQ(listed().front().url, FileUrl("/media/2"));
}

TEST_F(VolumeDiscovery, VolumesOfTheSameNameAreToldApartByTheirMountPoints) {
  mountNamed("/media/2", "Data");
  mountNamed("/media/1", "Data");
  mountNamed("/media/3", "Music");
  EXPECT_EQ(listedNames(), (Strings{"Data (/media/1)", "Data (/media/2)", "Music"}));
}

// Capacity.

TEST_F(VolumeDiscovery, ARootWithoutCapacityIsListedWithTheHomeFoldersFigures) {
  for (const Bytes total : {Bytes(0), Bytes(), Bytes(-1)}) {
    mounted_.clear();
    mount("/", valuesOf("Root", total, 5));
    EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/"), "Root", 900, 90}}));
  }
}

TEST_F(VolumeDiscovery, AnyOtherVolumeWithoutCapacityIsDropped) {
  EXPECT_FALSE(isListed("/media/data", valuesOf("Data", 0, 5)));
  EXPECT_FALSE(isListed("/media/data", valuesOf("Data", std::nullopt, std::nullopt)));
  EXPECT_FALSE(isListed("/media/data", valuesOf("Data", -1, 5)));
  EXPECT_TRUE(isListed("/media/data", valuesOf("Data", 1, 0)));
}

TEST_F(VolumeDiscovery, AvailableSpaceWithoutATotalIsNoCapacity) {
  EXPECT_FALSE(isListed("/media/data", valuesOf("Data", std::nullopt, 400)));
  mounted_.clear();
  mount("/", valuesOf("Root", std::nullopt, 400));
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/"), "Root", 900, 90}}));
}

TEST_F(VolumeDiscovery, ARootThatNobodyCanMeasureIsDropped) {
  fileSystem_.setVolumeValues("/home/ada", std::nullopt);
  EXPECT_FALSE(isListed("/", valuesOf("Root", 0, 5)));
  fileSystem_.setVolumeValues("/home/ada", valuesOf("Boot", 0, 5));
  EXPECT_FALSE(isListed("/", valuesOf("Root", 0, 5)));
}

TEST_F(VolumeDiscovery, ATotalWithoutAvailableSpaceIsListedWithNothingFree) {
  mount("/media/data", valuesOf("Data", 1000, std::nullopt));
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/media/data"), "Data", 1000, 0}}));
}

TEST_F(VolumeDiscovery, FreeSpaceIsClampedToTheTotal) {
  mount("/media/data", valuesOf("Data", 1000, 4000));
  EXPECT_EQ(listed().front().freeBytes, 1000);
}

TEST_F(VolumeDiscovery, WhatTheSystemWouldClearDoesNotCountInTheList) {
  VolumeValues values = valuesOf("Data", 1000, 400);
  values.availableForImportantUsageBytes = 700;
  mount("/media/data", values);
  EXPECT_EQ(listed().front().freeBytes, 400);
}

TEST_F(VolumeDiscovery, WhatTheSystemWouldClearCountsForARootMeasuredThroughTheHomeFolder) {
  VolumeValues home = valuesOf("Boot", 900, 90);
  home.availableForImportantUsageBytes = 200;
  fileSystem_.setVolumeValues("/home/ada", home);
  mount("/", valuesOf("Root", 0, 5));
  EXPECT_EQ(listed().front().freeBytes, 200);
}

// Names.

TEST_F(VolumeDiscovery, AVolumeWithoutANameIsCalledByItsMountPoint) {
  mount("/media/backup disk", valuesOf(std::nullopt, 1000, 400));
  mount("/media/data/", valuesOf("", 1000, 400));
  EXPECT_EQ(listedNames(), (Strings{"backup disk", "data"}));
}

TEST_F(VolumeDiscovery, ARootWithoutANameIsCalledMacintoshHD) {
  for (const std::optional<std::string>& name : {std::optional<std::string>(), {""}, {"/"}}) {
    mounted_.clear();
    mount("/", valuesOf(name, 1000, 400));
    EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/"), "Macintosh HD", 1000, 400}}));
  }
}

TEST_F(VolumeDiscovery, TheOrderUsesTheNameThatIsShown) {
  mount("/", valuesOf("/", 1000, 400));
  mountNamed("/media/1", "Linux");
  mountNamed("/media/2", "Nas");
  EXPECT_EQ(listedNames(), (Strings{"Linux", "Macintosh HD", "Nas"}));
}

TEST_F(VolumeDiscovery, ANameOfAnyBytesIsKept) {
  mountNamed("/media/odd", "\xff\xfe\n");
  EXPECT_EQ(listedNames(), Strings{"\xff\xfe\n"});
}

// Exclusions.

TEST_F(VolumeDiscovery, SystemPathsAreDroppedWithoutBeingMeasured) {
  for (const char* path : {"/System/Volumes/Data", "/System/Volumes/x/y", "/private/var/vm", "/private/var/vm/",
                           "/Library/Developer/CoreSimulator/Volumes/x", "/Users/a/Library/Developer/CoreSimulator/x",
                           "/media/iOS Simulator", "/media/SIMULATORs"}) {
    EXPECT_FALSE(isListed(path, "Data")) << path;
    EXPECT_FALSE(wasMeasured(FileUrl(path).path())) << path;
  }
}

TEST_F(VolumeDiscovery, PathsThatOnlyLookLikeSystemPathsAreKept) {
  for (const char* path : {"/System/Volumes", "/System/Volumesx", "/media/System/Volumes/Data", "/system/volumes/data",
                           "/private/var/vm2", "/private/var/vm/swap", "/media/private/var/vm", "/Library/Developer",
                           "/library/developer/coresimulator/x", "/simulator/data"}) {
    EXPECT_TRUE(isListed(path, "Data")) << path;
  }
}

TEST_F(VolumeDiscovery, VolumesNotMeantForPeopleAreDropped) {
  VolumeValues values = valuesOf("Data", 1000, 400);
  values.isBrowsable = false;
  EXPECT_FALSE(isListed("/media/data", values));
  values.isBrowsable = true;
  EXPECT_TRUE(isListed("/media/data", values));
  values.isBrowsable.reset();
  EXPECT_TRUE(isListed("/media/data", values));
}

TEST_F(VolumeDiscovery, EverySystemNameIsDropped) {
  for (const char* name : {"preboot", "vm", "update", "hardware", "xart", "iscpreboot", "recovery", "mnt_preview"}) {
    EXPECT_FALSE(isListed("/media/x", name)) << name;
  }
}

TEST_F(VolumeDiscovery, CaseAndSurroundingWhiteSpaceOfASystemNameDoNotMatter) {
  for (const char* name : {"Preboot ", "VM", "RECOVERY", " \t\r\nUpdate\n", "\u00a0xarT\u2003", "\u2028\u2029vm\u0085",
                           "\u3000vm \u1680", "\vvm\f"}) {
    EXPECT_FALSE(isListed("/media/x", name)) << name;
  }
}

TEST_F(VolumeDiscovery, NamesThatOnlyResembleSystemNamesAreKept) {
  for (const char* name : {"vm2", "v m", "my vm", "updates", "recovery hd", "hard ware", "\u200bvm", "vm\xa0", "   "}) {
    EXPECT_TRUE(isListed("/media/x", name)) << name;
  }
}

TEST_F(VolumeDiscovery, SimulatorAnywhereInTheNameIsDroppedInAnyCase) {
  for (const char* name : {"iOS 17 Simulator Runtime", "SIMULATOR", "MySimulators", "xsimulatorx"}) {
    EXPECT_FALSE(isListed("/media/x", name)) << name;
  }
  EXPECT_TRUE(isListed("/media/x", "Simulation"));
}

TEST_F(VolumeDiscovery, ASystemNameTakenFromTheMountPointIsDroppedToo) {
  EXPECT_FALSE(isListed("/media/Recovery", valuesOf(std::nullopt, 1000, 400)));
}

TEST_F(VolumeDiscovery, AVolumeThatCannotBeMeasuredIsLeftOut) {
  mount("/media/dead", std::nullopt);
  mountNamed("/media/data", "Data");
  EXPECT_EQ(listedNames(), Strings{"Data"});
}

// The fallback.

TEST_F(VolumeDiscovery, WithoutAMountListTheBootVolumeStandsIn) {
  fileSystem_.setMountedVolumes(std::nullopt);
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/"), "Boot", 900, 90}}));
}

TEST_F(VolumeDiscovery, WithEveryVolumeFilteredOutTheBootVolumeStandsIn) {
  mountNamed("/media/x", "vm");
  mount("/media/dead", std::nullopt);
  mount("/media/empty", valuesOf("Empty", 0, 0));
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/"), "Boot", 900, 90}}));
  mounted_.clear();
  fileSystem_.setMountedVolumes(mounted_);
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/"), "Boot", 900, 90}}));
}

TEST_F(VolumeDiscovery, TheFallbackIsEmptyWhenTheHomeFolderCannotBeMeasured) {
  fileSystem_.setMountedVolumes(std::nullopt);
  fileSystem_.setVolumeValues("/home/ada", std::nullopt);
  EXPECT_EQ(listed(), std::vector<SweeperVolume>());
  fileSystem_.setVolumeValues("/home/ada", valuesOf("Boot", 0, 90));
  EXPECT_EQ(listed(), std::vector<SweeperVolume>());
}

TEST_F(VolumeDiscovery, TheFallbackWithoutANameIsCalledMacintoshHD) {
  fileSystem_.setVolumeValues("/home/ada", valuesOf(std::nullopt, 900, 90));
  EXPECT_EQ(listedNames(), Strings{"Macintosh HD"});
}

TEST_F(VolumeDiscovery, TheFallbackKeepsAnEmptyName) {
  fileSystem_.setVolumeValues("/home/ada", valuesOf("", 900, 90));
  EXPECT_EQ(listedNames(), Strings{""});
}

TEST_F(VolumeDiscovery, NothingIsRememberedBetweenCalls) {
  mountNamed("/media/data", "Data");
  EXPECT_EQ(listed().front().freeBytes, 400);
  fileSystem_.setVolumeValues("/media/data", valuesOf("Renamed", 1000, 399));
  EXPECT_EQ(listed(), (std::vector<SweeperVolume>{{FileUrl("/media/data"), "Renamed", 1000, 399}}));
}

}  // namespace
}  // namespace dunmere
