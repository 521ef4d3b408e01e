// Volumes, home folder, clock and priority of the real system.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string>
#include <thread>

#include "platform/platform_file_system.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/dead_share.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

std::vector<std::string> mountedPaths(FileSystem& files) {
  std::vector<std::string> paths;
  const auto volumes = files.mountedVolumes();
  for (const VolumeMount& volume : volumes.value()) paths.push_back(volume.url.path());
  return paths;
}

TEST(LinuxVolumes, RootIsMountedOnceAndMeasured) {
  const auto files = makePlatformFileSystem();
  EXPECT_EQ(std::ranges::count(mountedPaths(*files), "/"), 1);
  const auto values = files->volumeValues(FileUrl("/"));
  ASSERT_TRUE(values);
  struct statvfs space{};
  ASSERT_EQ(::statvfs("/", &space), 0);
  EXPECT_EQ(values->totalBytes, static_cast<std::int64_t>(space.f_blocks * space.f_frsize));
  EXPECT_GT(values->availableBytes, 0);
  EXPECT_LE(values->availableBytes, values->totalBytes);
  EXPECT_EQ(values->isBrowsable, true);
  EXPECT_FALSE(values->name.value().empty());
  EXPECT_EQ(values->availableForImportantUsageBytes, std::nullopt);
}

TEST(LinuxVolumes, KernelMountsAreNotListedAndNotMeant) {
  const auto files = makePlatformFileSystem();
  EXPECT_THAT(mountedPaths(*files), ::testing::Not(::testing::Contains("/proc")));
  const auto values = files->volumeValues(FileUrl("/proc/"));
  ASSERT_TRUE(values);
  EXPECT_EQ(values->isBrowsable, false);
  EXPECT_EQ(values->totalBytes, std::nullopt);
  EXPECT_EQ(values->name, std::nullopt);
}

TEST(LinuxVolumes, FolderIsMeasuredByTheVolumeItLiesOn) {
  const TemporaryTree tree;
  const auto files = makePlatformFileSystem();
  const auto values = files->volumeValues(tree.url());
  ASSERT_TRUE(values);
  struct statvfs space{};
  ASSERT_EQ(::statvfs(tree.path().c_str(), &space), 0);
  EXPECT_EQ(values->totalBytes, static_cast<std::int64_t>(space.f_blocks * space.f_frsize));
}

TEST(LinuxVolumes, MissingFolderFails) {
  const auto files = makePlatformFileSystem();
  const auto values = files->volumeValues(FileUrl("/nonexistent/folder"));
  EXPECT_EQ(errorOf(values), ENOENT);
  EXPECT_EQ(values.error().path, FileUrl("/nonexistent/folder"));
}

TEST(LinuxVolumes, NewMountsShowAtOnceAndTheirKindDecides) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const auto result = runWithOwnMounts([] {
    const auto files = makePlatformFileSystem();
    const auto before = mountedPaths(*files);
    if (::mount("memory", "/mnt", "tmpfs", 0, "size=1m") != 0) return 3;
    EXPECT_EQ(mountedPaths(*files), before);
    EXPECT_EQ(files->volumeValues(FileUrl("/mnt"))->isBrowsable, false);
    EXPECT_EQ(files->volumeValues(FileUrl("/mnt"))->totalBytes, std::nullopt);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(LinuxVolumes, BoundFolderIsNotOffered) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const TemporaryTree tree;
  tree.folder("folder");
  const auto result = runWithOwnMounts([&tree] {
    const auto files = makePlatformFileSystem();
    if (::mount(tree.path("folder").c_str(), "/srv", nullptr, MS_BIND, nullptr) != 0) return 3;
    EXPECT_THAT(mountedPaths(*files), ::testing::Not(::testing::Contains("/srv")));
    EXPECT_EQ(files->volumeValues(FileUrl("/srv"))->isBrowsable, false);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(LinuxVolumes, AMountThatNeverAnswersIsListedWithoutBeingAsked) {
  DUNMERE_NEEDS(Feature::fuse);
  const TemporaryTree tree;
  const auto result = runWithOwnMounts([&tree] {
    const DeadShare share("/mnt", tree.path("fuse"));
    const auto files = makePlatformFileSystem();
    const auto volumes = files->mountedVolumes().value();
    const auto dead = std::ranges::find(volumes, FileUrl("/mnt"), &VolumeMount::url);
    EXPECT_EQ(dead->name, "mnt");
    EXPECT_EQ(dead->source, "host:/share");
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(LinuxVolumes, WalkGoesThroughMountsBelow) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const TemporaryTree tree;
  tree.folder("volume");
  const auto result = runWithOwnMounts([&tree] {
    if (::mount("memory", tree.path("volume").c_str(), "tmpfs", 0, "size=1m") != 0) return 3;
    tree.file("volume/file", 4096);
    const auto files = makePlatformFileSystem();
    const auto folder = opened(*files, tree.url());
    EXPECT_EQ(contentsOf(*folder).at("volume").kind, EntryKind::folder);
    EXPECT_EQ(contentsOf(*folder->openChild("volume").value()).at("file").allocatedBytes, 4096);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(LinuxVolumes, ChangedRootIsOfferedThoughTheTableDoesNotListIt) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const TemporaryTree tree;
  tree.folder("proc");
  tree.folder("home");
  const auto result = runWithOwnMounts([&tree] {
    struct statvfs space{};
    if (::statvfs(tree.path().c_str(), &space) != 0) return 3;
    if (::mount("/proc", tree.path("proc").c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) return 4;
    if (::chroot(tree.path().c_str()) != 0) return 5;
    const auto files = makePlatformFileSystem();
    EXPECT_THAT(mountedPaths(*files), ::testing::ElementsAre("/"));
    const auto values = files->volumeValues(FileUrl("/home"));
    EXPECT_EQ(values->totalBytes, static_cast<std::int64_t>(space.f_blocks * space.f_frsize));
    EXPECT_EQ(values->name, "Filesystem root");
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(LinuxVolumes, NoProcMeansNoList) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const auto result = runWithOwnMounts([] {
    const auto files = makePlatformFileSystem();
    if (::mount("memory", "/proc", "tmpfs", 0, "size=1m") != 0) return 3;
    EXPECT_FALSE(files->mountedVolumes());
    EXPECT_EQ(errorOf(files->volumeValues(FileUrl("/"))), ENOENT);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(HomeFolder, IsTheAccountsOwn) {
  EXPECT_EQ(makePlatformFileSystem()->homeFolder(), FileUrl(::getpwuid(::getuid())->pw_dir));
}

TEST(HomeFolder, EnvironmentIsNotAsked) {
  const auto result = runInChild([] {
    ::setenv("HOME", "/elsewhere", 1);
    EXPECT_NE(makePlatformFileSystem()->homeFolder(), FileUrl("/elsewhere"));
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(HomeFolder, UnknownUserHasTheRootFolder) {
  if (::geteuid() == 0) DUNMERE_NEEDS(Feature::secondUser);
  const auto result = runInChild([] {
    if (::geteuid() == 0 && ::setuid(987'654) != 0) return 3;
    const bool isKnown = ::getpwuid(::getuid()) != nullptr;
    EXPECT_EQ(makePlatformFileSystem()->homeFolder() == FileUrl("/"), !isKnown);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(Clock, IsTheSystemsMonotonicOne) {
  const auto files = makePlatformFileSystem();
  const auto before = files->now();
  timespec exact{};
  ::clock_gettime(CLOCK_MONOTONIC, &exact);
  const auto exactNow = std::chrono::seconds(exact.tv_sec) + std::chrono::nanoseconds(exact.tv_nsec);
  EXPECT_LE(before, exactNow);
  while (files->now() == before) std::this_thread::yield();
  EXPECT_GT(files->now(), before);
}

int nice() {
  return ::getpriority(PRIO_PROCESS, 0);
}

// From ioprio_set(2), because some versions of <linux/ioprio.h> do not compile as C++: class in the upper bits, level
// below.
constexpr int kIoWhoProcess = 1;
constexpr long kIoBestEffortLowest = 2 << 13 | 7;
constexpr long kIoIdle = 3 << 13;

long ioPriority() {
  return ::syscall(SYS_ioprio_get, kIoWhoProcess, 0);
}

// A priority may be lowered by anybody and raised by nobody, so these begin with the one that the tests were started
// with.

TEST(UtilityPriority, LowersTheCallingThreadAlone) {
  const auto result = runInChild([] {
    const auto files = makePlatformFileSystem();
    const int before = nice();
    const long ioBefore = ioPriority();
    std::thread([&files, before, ioBefore] {
      files->enterUtilityPriority();
      EXPECT_EQ(nice(), std::max(before, 10));
      EXPECT_EQ(ioPriority(), std::max(ioBefore, kIoBestEffortLowest));
    }).join();
    EXPECT_EQ(nice(), before);
    EXPECT_EQ(ioPriority(), ioBefore);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST(UtilityPriority, NeverRaises) {
  const auto result = runInChild([] {
    const auto files = makePlatformFileSystem();
    const int low = std::max(nice(), 15);
    if (::setpriority(PRIO_PROCESS, 0, low) != 0) return 3;
    if (::syscall(SYS_ioprio_set, kIoWhoProcess, 0, kIoIdle) != 0) return 4;
    files->enterUtilityPriority();
    EXPECT_EQ(nice(), low);
    EXPECT_EQ(ioPriority(), kIoIdle);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

}  // namespace
}  // namespace dunmere::test
