#include "platform/macos/macos_file_system.h"

#include <cerrno>
#include <chrono>
#include <ctime>
#include <utility>

#include "platform/macos/macos_open_folder.h"
#include "platform/macos/mounted_volumes.h"
#include "platform/macos/process_policies.h"
#include "platform/macos/user_locale.h"
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

}  // namespace

std::unique_ptr<FileSystem> makePlatformFileSystem() {
  return std::make_unique<MacosFileSystem>();
}

MacosFileSystem::MacosFileSystem() : descriptors_(FolderDescriptors::budgetOfProcess()), nameOrder_(collationLocale()) {
  keepCloudFilesAway();
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> MacosFileSystem::openFolder(const FileUrl& url,
                                                                                   EntryDetail detail) {
  return MacosOpenFolder::open(descriptors_, url, detail);
}

std::optional<std::vector<VolumeMount>> MacosFileSystem::mountedVolumes() {
  const auto mounted = dunmere::mountedVolumes();
  if (!mounted) return std::nullopt;
  std::vector<VolumeMount> volumes;
  for (const MountedVolume& volume : *mounted) {
    const FileUrl url(volume.mountPoint);
    volumes.push_back({.url = url, .name = url.lastPathComponent(), .source = volume.device});
  }
  return volumes;
}

std::expected<VolumeValues, SweepError> MacosFileSystem::volumeValues(const FileUrl& url) {
  const auto mounted = dunmere::mountedVolumes();
  if (!mounted) return std::unexpected(failure(url, mounted.error()));
  const std::string path = url.key();
  const MountedVolume* const volume = volumeHolding(*mounted, path);
  if (volume == nullptr) return std::unexpected(failure(url, ENOENT));
  VolumeValues values;
  values.isBrowsable = volume->isBrowsable();
  if (!volume->isBrowsable() && volume->mountPoint == path) return values;

  auto reading = readVolume(path, volume->device);
  if (!reading) return std::unexpected(failure(url, reading.error()));
  values.name = std::move(reading->label);
  values.totalBytes = reading->totalBytes;
  values.availableBytes = reading->availableBytes;
  values.availableForImportantUsageBytes = reading->availableForImportantUsageBytes;
  return values;
}

FileUrl MacosFileSystem::homeFolder() {
  return currentHomeFolder();
}

FileSystem::Instant MacosFileSystem::now() {
  // Goes on while the machine sleeps. The approximate reading needs no call of the kernel, and is milliseconds off.
  return std::chrono::nanoseconds(::clock_gettime_nsec_np(CLOCK_MONOTONIC_RAW_APPROX));
}

std::string MacosFileSystem::nameSortKey(std::string_view name) {
  return nameOrder_.sortKey(name);
}

void MacosFileSystem::enterUtilityPriority() noexcept {
  lowerThreadPriority();
}

}  // namespace dunmere
