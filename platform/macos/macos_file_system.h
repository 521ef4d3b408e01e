// MacosFileSystem: the engine's FileSystem on macOS.
#pragma once

#include "engine/file_system.h"
#include "platform/icu/icu_name_order.h"
#include "platform/posix/folder_descriptors.h"

namespace dunmere {

/// Thread-safe. Folders that it opened must not outlive it. Making it keeps the whole process from fetching files from
/// the cloud.
class MacosFileSystem final : public FileSystem {
 public:
  MacosFileSystem();

  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override;

  /// All mounted volumes, those that are not meant for people too.
  std::optional<std::vector<VolumeMount>> mountedVolumes() override;

  using FileSystem::volumeValues;
  /// A volume that is not meant for people is not asked for anything but that.
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override;

  FileUrl homeFolder() override;
  Instant now() override;
  std::string nameSortKey(std::string_view name) override;
  /// To the quality of service "utility", which the disk's priority follows; never raises it.
  void enterUtilityPriority() noexcept override;

 private:
  FolderDescriptors descriptors_;
  const IcuNameOrder nameOrder_;
};

}  // namespace dunmere
