// LinuxFileSystem: the engine's file system on Linux.
#pragma once

#include "engine/file_system.h"
#include "platform/icu/icu_name_order.h"
#include "platform/linux/local_mounts.h"
#include "platform/posix/folder_descriptors.h"
#include "platform/posix/patience.h"
#include "platform/posix/volume_meter.h"

namespace dunmere {

/// Folders by getdents64 and statx, volumes by the mount table, names by ICU. Thread-safe. Linux marks no folder as a
/// package, so EntryAttributes::isPackage is never set.
class LinuxFileSystem final : public FileSystem {
 public:
  LinuxFileSystem();

  /// Besides what the contract says: the folder stays open until it is destroyed, and at most
  /// FolderDescriptors::budgetOfProcess() of the folders below it. With EntryDetail::kinds no call, of the folder
  /// neither, waits longer than Patience::kUsual (see PatientFolder); what is stuck by then must not outlive this.
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override;

  /// Mounts that are no volumes to people (isOfferedMount()) are left out already.
  std::optional<std::vector<FileUrl>> mountedVolumes() override;

  /// Of a mount point that is not offered only that is told: such a file system is not touched. `url` is not
  /// standardized through links. A volume without a label has the last component of its mount point for a name; "/"
  /// without a label is "Filesystem root". Waits at most VolumeMeter::kPatience.
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override;

  FileUrl homeFolder() override;
  Instant now() override;
  std::string nameSortKey(std::string_view name) override;
  void enterUtilityPriority() noexcept override;

 private:
  FolderDescriptors descriptors_;
  Patience patience_;
  LocalMounts localMounts_;
  VolumeMeter meter_;
  const IcuNameOrder nameOrder_;
};

}  // namespace dunmere
