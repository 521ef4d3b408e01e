// Recorded mount tables: which mounts can be reached, and which are drives to people.
#include "platform/linux/mount_table.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "platform/linux/mount_choice.h"
#include "platform/posix/paths.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<MountEntry> recorded(const std::string& name) {
  return readMountTable(DUNMERE_PLATFORM_FIXTURES "/" + name + ".mountinfo").value();
}

std::vector<std::string> offered(const std::string& name) {
  std::vector<std::string> mountPoints;
  for (const MountEntry& mount : recorded(name)) {
    if (isOfferedMount(mount)) mountPoints.push_back(mount.mountPoint);
  }
  return mountPoints;
}

std::vector<std::string> reachable(const std::string& name) {
  std::vector<std::string> devices;
  for (const MountEntry& mount : recorded(name)) devices.push_back(mount.source);
  return devices;
}

MountEntry disk(const std::string& mountPoint, const std::string& fileSystem = "ext4") {
  return {.id = 2,
          .parentId = 1,
          .mountPoint = mountPoint,
          .root = "/",
          .fileSystem = fileSystem,
          .source = "/dev/sdx1",
          .subvolume = "",
          .isPseudo = false,
          .isNetwork = false};
}

TEST(MountTable, DesktopOffersItsDisksAndCardsOnly) {
  EXPECT_THAT(offered("desktop"), ElementsAre("/", "/home", "/mnt/data disk", "/srv", "/storage",
                                              "/media/ann/Photo Card", "/run/media/ann/DISC", "/home/ann/Vault"));
}

TEST(MountTable, SubvolumesAreOfferedAndTheirBoundFoldersAreNot) {
  EXPECT_THAT(offered("subvolumes"), ElementsAre("/", "/home", "/srv", "/mnt/pool", "/mnt/tank"));
}

TEST(MountTable, ContainerOffersItsRootAlone) {
  EXPECT_THAT(offered("container"), ElementsAre("/"));
}

TEST(MountTable, SharesAreOfferedWhereverPeopleMountThem) {
  EXPECT_THAT(offered("network"), ElementsAre("/", "/mnt/nas", "/net/files", "/opt/shared", "/mnt/team",
                                              "/home/ann/remote", "/mnt/host", "/media/sf_shared", "/mnt/c"));
}

TEST(MountTable, OfMountsOnOneFolderTheTopmostCounts) {
  const auto devices = reachable("hidden");
  EXPECT_THAT(devices, ElementsAre("/dev/sda1", "/dev/sda3", "/dev/sda7", "/dev/sda8", "/dev/sda9", "/dev/sda10",
                                   "/dev/sda11", "/dev/sda12", "/dev/sda13"));
}

TEST(MountTable, MountPointsAreRawBytesAndDeletedOnesAreNotOffered) {
  EXPECT_THAT(offered("hidden"), ElementsAre("/", "/mnt/a", "/srv/x", "/srv/x/new", "/home", "/home/ann", "/home/annex",
                                             "/mnt/odd\nname\t\xff"));
}

TEST(MountTable, FieldsAreTaken) {
  const auto mounts = recorded("subvolumes");
  const MountEntry& pool = mounts.at(8);
  EXPECT_EQ(pool, (MountEntry{.id = 76,
                              .parentId = 60,
                              .mountPoint = "/mnt/pool",
                              .root = "/@with space",
                              .fileSystem = "btrfs",
                              .source = "/dev/sdb",
                              .subvolume = "/@with space",
                              .isPseudo = false,
                              .isNetwork = false}));
  EXPECT_TRUE(mounts.at(1).isPseudo);
  EXPECT_TRUE(recorded("network").at(1).isNetwork);
}

TEST(MountTable, MissingTableIsAnErrorAndNonsenseHoldsNoMounts) {
  EXPECT_EQ(readMountTable("/nonexistent/mountinfo").error(), ENOENT);
  EXPECT_THAT(recorded("nonsense"), IsEmpty());
}

/// A changed root need not be one.
bool isMountPoint(const char* path) {
  struct statx status{};
  return ::statx(AT_FDCWD, path, 0, 0, &status) == 0 && (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

TEST(MountTable, OwnTableHoldsTheRoot) {
  const auto mounts = readMountTable().value();
  EXPECT_EQ(mountHolding(mounts, "/proc/self/status")->fileSystem, "proc");
  const MountEntry* const root = mountHolding(mounts, "/");
  ASSERT_EQ(root != nullptr, isMountPoint("/"));
  if (root != nullptr) {
    EXPECT_EQ(root->mountPoint, "/");
  }
}

TEST(MountTable, MountThatIsItsOwnParentEndsTheClimb) {
  auto root = disk("/");
  root.parentId = root.id;
  EXPECT_THAT(withoutHiddenMounts({root}), ElementsAre(root));
}

TEST(MountTable, WhatIsMountedOnAMountThatIsItsOwnParentIsReachable) {
  auto root = disk("/");
  root.parentId = root.id;
  auto home = disk("/home");
  home.id = root.id + 1;
  home.parentId = root.id;
  EXPECT_THAT(withoutHiddenMounts({root, home}), ElementsAre(root, home));
}

/// Mounts one volume after another on folders that can be seen, now and then below others, as mount(8) does.
class GrowingMounts {
 public:
  explicit GrowingMounts(std::uint32_t seed) : random_(seed) { mounts_.push_back(mount(0, "/")); }

  void mountOne() {
    const std::string folder = folders_[random_() % folders_.size()];
    const bool isPropagated = random_() % 4 == 0;  // to any mount, whether it can be seen there or not
    const MountEntry& parent = isPropagated ? mounts_[random_() % mounts_.size()] : holder(folder);
    if (isAtOrBelow(folder, parent.mountPoint)) mounts_.push_back(mount(parent.id, folder));
  }

  const std::vector<MountEntry>& mounts() const { return mounts_; }

  /// The mount that the kernel would find: from the first one on, always into what is mounted last on the folder.
  const MountEntry& holder(const std::string& path) const {
    const MountEntry* found = &mounts_.front();
    for (const MountEntry* next = found; next != nullptr; next = nextOn(path, *found)) found = next;
    return *found;
  }

 private:
  const MountEntry* nextOn(const std::string& path, const MountEntry& parent) const {
    const MountEntry* next = nullptr;
    for (const MountEntry& mount : mounts_) {
      if (mount.parentId != parent.id || !isAtOrBelow(path, mount.mountPoint)) continue;
      // The way down meets the folder nearest to the root first, and there the latest mount.
      if (next == nullptr || mount.mountPoint.size() <= next->mountPoint.size()) next = &mount;
    }
    return next;
  }

  MountEntry mount(int parentId, const std::string& folder) {
    MountEntry entry = disk(folder);
    entry.id = static_cast<int>(mounts_.size()) + 1;
    entry.parentId = parentId;
    return entry;
  }

  const std::vector<std::string> folders_{"/", "/a", "/a/b", "/a/b/c", "/ab", "/a/c", "/d"};
  std::mt19937 random_;
  std::vector<MountEntry> mounts_;
};

TEST(MountTable, AMountIsReachableWhenItsOwnFolderLeadsIntoIt) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    GrowingMounts growing(seed);
    for (int i = 0; i < 12; ++i) growing.mountOne();
    std::vector<MountEntry> expected;
    for (const MountEntry& mount : growing.mounts()) {
      if (growing.holder(mount.mountPoint).id == mount.id) expected.push_back(mount);
    }
    EXPECT_EQ(withoutHiddenMounts(growing.mounts()), expected) << "seed " << seed;
  }
}

TEST(MountTable, AMountPointThatIsNoPathEndsTheLookAbove) {
  EXPECT_EQ(withoutHiddenMounts({disk("nonsense"), disk("")}).size(), 2u);
}

TEST(MountTable, ParentsInACircleAreNotReachable) {
  auto one = disk("/mnt/one");
  auto two = disk("/mnt/two");
  one.parentId = 3;
  two.id = 3;
  two.parentId = one.id;
  EXPECT_THAT(withoutHiddenMounts({one, two}), IsEmpty());
}

TEST(MountChoice, RootIsOfferedWhateverItIs) {
  for (const char* type : {"ext4", "overlay", "tmpfs", "rootfs", "squashfs", "zfs"}) {
    auto root = disk("/", type);
    root.isPseudo = true;
    root.root = "/some/folder";
    EXPECT_TRUE(isOfferedMount(root)) << type;
  }
}

TEST(MountChoice, PlacesDecide) {
  for (const char* place : {"/home", "/home/ann", "/media/usb", "/run/media/ann/usb", "/mnt", "/mnt/a/b", "/srv/x",
                            "/data", "/storage/one", "/bootcamp", "/users"}) {
    EXPECT_TRUE(isOfferedMount(disk(place))) << place;
  }
  for (const char* place :
       {"/boot", "/boot/efi", "/efi", "/usr", "/usr/local", "/var", "/var/log", "/tmp", "/run/x", "/dev/x", "/snap/a/1",
        "/opt", "/nix/store", "/mnt/.hidden", "/.snapshots", "/home/ann/.local/x"}) {
    EXPECT_FALSE(isOfferedMount(disk(place))) << place;
  }
}

TEST(MountChoice, KindsDecide) {
  for (const char* type : {"ext4", "xfs", "btrfs", "exfat", "ntfs3", "fuseblk", "vfat", "iso9660", "udf", "zfs"}) {
    EXPECT_TRUE(isOfferedMount(disk("/mnt/x", type))) << type;
  }
  for (const char* type : {"squashfs", "erofs", "aufs", "fuse.snapfuse", "swap"}) {
    EXPECT_FALSE(isOfferedMount(disk("/mnt/x", type))) << type;
  }
  auto pseudo = disk("/mnt/x", "tmpfs");
  pseudo.isPseudo = true;
  EXPECT_FALSE(isOfferedMount(pseudo));
}

TEST(MountChoice, EfiPartitionIsNotOfferedWherever) {
  EXPECT_FALSE(isOfferedMount(disk("/media/ann/EFI", "vfat")));
  EXPECT_FALSE(isOfferedMount(disk("/mnt/esp", "vfat")));
  EXPECT_TRUE(isOfferedMount(disk("/media/ann/EFI", "ext4")));
}

}  // namespace
}  // namespace dunmere::test
