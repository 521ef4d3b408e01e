#include "platform/linux/linux_file_system.h"

#include <chrono>
#include <ctime>
#include <utility>

#include "platform/linux/linux_open_folder.h"
#include "platform/linux/mount_choice.h"
#include "platform/linux/mount_table.h"
#include "platform/linux/patient_folder.h"
#include "platform/linux/utility_priority.h"
#include "platform/linux/volume_reading.h"
#include "platform/platform_file_system.h"
#include "platform/posix/home_folder.h"

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

std::string displayName(const MountEntry& mount, const std::optional<std::string>& label) {
  if (label) return *label;
  return mount.mountPoint == "/" ? "Filesystem root" : FileUrl(mount.mountPoint).lastPathComponent();
}

}  // namespace

std::unique_ptr<FileSystem> makePlatformFileSystem() {
  return std::make_unique<LinuxFileSystem>();
}

LinuxFileSystem::LinuxFileSystem()
    : descriptors_(FolderDescriptors::budgetOfProcess()), meter_(readVolume), nameOrder_(IcuNameOrder::userLocale()) {}

std::expected<std::shared_ptr<OpenFolder>, SweepError> LinuxFileSystem::openFolder(const FileUrl& url,
                                                                                   EntryDetail detail) {
  // A scan has a thread of its own, which may wait; a listing is made on the interface's.
  if (detail == EntryDetail::kinds) return PatientFolder::open(descriptors_, patience_, localMounts_, url);
  return LinuxOpenFolder::open(descriptors_, url, detail);
}

std::optional<std::vector<FileUrl>> LinuxFileSystem::mountedVolumes() {
  const auto mounts = readMountTable();
  if (!mounts) return std::nullopt;
  std::vector<FileUrl> volumes;
  if (mountHolding(*mounts, "/") == nullptr) volumes.emplace_back("/");
  for (const MountEntry& mount : *mounts) {
    if (isOfferedMount(mount)) volumes.emplace_back(mount.mountPoint);
  }
  return volumes;
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
  const auto reading = meter_.measure(mount.mountPoint, path, mount.source);
  if (!reading) return std::unexpected(failure(url, reading.error()));
  return VolumeValues{.name = displayName(mount, reading->label),
                      .totalBytes = reading->totalBytes,
                      .availableBytes = reading->availableBytes,
                      .availableForImportantUsageBytes = std::nullopt,
                      .isBrowsable = isOffered};
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
