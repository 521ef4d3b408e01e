#include "platform/linux/linux_file_system.h"

#include <chrono>
#include <ctime>
#include <utility>

#include "platform/linux/linux_open_folder.h"
#include "platform/linux/mount_choice.h"
#include "platform/linux/mount_table.h"
#include "platform/linux/utility_priority.h"
#include "platform/platform_file_system.h"
#include "platform/posix/home_folder.h"
#include "platform/posix/volume_reading.h"

namespace dunmere {

namespace {

SweepError failure(const FileUrl& url, int error) {
  return {.attempt = SweepAttempt::openFolder,
          .path = url,
          .code = std::error_code(error, std::generic_category()),
          .volumeName = {}};
}

/// What stands for the root folder where the table does not list its mount, as in a changed root.
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

/// Of the file system at `path`, which `volume` tells where it is mounted.
std::expected<VolumeValues, SweepError> measure(const std::string& path, const VolumeMount& volume, bool isOffered) {
  auto reading = readVolume(path, volume.source);
  if (!reading) return std::unexpected(failure(FileUrl(path), reading.error()));
  return VolumeValues{.name = std::move(reading->label).value_or(volume.name),
                      .totalBytes = reading->totalBytes,
                      .availableBytes = reading->availableBytes,
                      .availableForImportantUsageBytes = std::nullopt,
                      .isBrowsable = isOffered};
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
  if (!mounts) return std::unexpected(failure(url, mounts.error()));
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
  lowerThreadPriority();
}

}  // namespace dunmere
