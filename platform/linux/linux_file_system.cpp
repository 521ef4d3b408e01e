#include "platform/linux/linux_file_system.h"

#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>

#include "platform/linux/linux_open_folder.h"
#include "platform/linux/mount_choice.h"
#include "platform/linux/mount_table.h"
#include "platform/linux/volume_label.h"
#include "platform/platform_file_system.h"
#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"

namespace dunmere {

namespace {

/// Stands for the root folder where the table does not list its mount, as in a changed root.
MountEntry unlistedRoot() {
  MountEntry root;
  root.mountPoint = "/";
  root.root = "/";
  return root;
}

MountEntry mountOf(const std::vector<MountEntry>& mounts, const std::string& path) {
  const MountEntry* mount = mountHolding(mounts, path);
  return mount == nullptr ? unlistedRoot() : *mount;
}

/// The name of a volume without a label.
std::string plainName(const std::string& mountPoint) {
  return mountPoint == "/" ? "Filesystem root" : FileUrl(mountPoint).lastPathComponent();
}

VolumeMount volumeAt(const MountEntry& mount) {
  return {.url = FileUrl(mount.mountPoint), .name = plainName(mount.mountPoint), .source = mount.source};
}

/// Asks the file system at `path`, which lies on `volume`.
std::expected<VolumeValues, SweepError> measure(const std::string& path, const VolumeMount& volume, bool isOffered) {
  struct statvfs space{};
  if (::statvfs(path.c_str(), &space) != 0) return openFailure(FileUrl(path), errno);
  return VolumeValues{.name = labelOfDevice(volume.source).value_or(volume.name),
                      .totalBytes = bytesOf(space.f_blocks, space.f_frsize),
                      .availableBytes = bytesOf(space.f_bavail, space.f_frsize),
                      .availableForImportantUsageBytes = std::nullopt,
                      .isBrowsable = isOffered};
}

constexpr int kCallingThread = 0;  // Linux has both priorities for each thread

void lowerProcessorPriority() {
  constexpr int kNice = 10;
  errno = 0;
  const int current = ::getpriority(PRIO_PROCESS, kCallingThread);
  if (errno == 0 && current < kNice) ::setpriority(PRIO_PROCESS, kCallingThread, kNice);
}

/// To the lowest of the best-effort class, in which the thread still moves on a busy disk.
void lowerDiskPriority() {
  // The kernel's numbers, from ioprio_set(2): some versions of <linux/ioprio.h> do not compile as C++.
  constexpr int kWhoProcess = 1;
  constexpr long kClassBestEffort = 2;
  constexpr long kClassIdle = 3;
  constexpr int kClassShift = 13;
  constexpr long kLowest = 7;
  const long current = ::syscall(SYS_ioprio_get, kWhoProcess, kCallingThread);
  if (current >= 0 && current >> kClassShift == kClassIdle) return;
  ::syscall(SYS_ioprio_set, kWhoProcess, kCallingThread, kClassBestEffort << kClassShift | kLowest);
}

}  // namespace

std::unique_ptr<FileSystem> makePlatformFileSystem() {
  return std::make_unique<LinuxFileSystem>();
}

LinuxFileSystem::LinuxFileSystem()
    : descriptors_(FolderDescriptors::budgetOfProcess()), nameOrder_(IcuNameOrder::userLocale()) {}

std::expected<std::shared_ptr<OpenFolder>, SweepError> LinuxFileSystem::openFolder(const FileUrl& url,
                                                                                   EntryDetail detail) {
  return LinuxOpenFolder::open(descriptors_, url, detail);
}

std::optional<std::vector<VolumeMount>> LinuxFileSystem::mountedVolumes() {
  const auto mounts = readMountTable();
  if (!mounts) return std::nullopt;
  std::vector<VolumeMount> volumes;
  if (mountHolding(*mounts, "/") == nullptr) volumes.push_back(volumeAt(unlistedRoot()));
  for (const MountEntry& mount : *mounts) {
    if (isOfferedMount(mount)) volumes.push_back(volumeAt(mount));
  }
  return volumes;
}

std::expected<VolumeValues, SweepError> LinuxFileSystem::volumeValues(const VolumeMount& volume) {
  return measure(volume.url.path(), volume, true);
}

std::expected<VolumeValues, SweepError> LinuxFileSystem::volumeValues(const FileUrl& url) {
  const auto mounts = readMountTable();
  if (!mounts) return openFailure(url, mounts.error());
  const std::string path = url.key();
  const MountEntry mount = mountOf(*mounts, path);
  const bool isOffered = isOfferedMount(mount);
  if (!isOffered && mount.mountPoint == path) {
    VolumeValues values;
    values.isBrowsable = false;
    return values;
  }
  return measure(path, volumeAt(mount), isOffered);
}

FileUrl LinuxFileSystem::homeFolder() {
  return currentHomeFolder();
}

FileSystem::Instant LinuxFileSystem::now() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);  // cannot fail for a clock that every kernel has
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::string LinuxFileSystem::nameSortKey(std::string_view name) {
  return nameOrder_.sortKey(name);
}

void LinuxFileSystem::enterUtilityPriority() noexcept {
  lowerProcessorPriority();
  lowerDiskPriority();
}

}  // namespace dunmere
