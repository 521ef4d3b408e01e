// LinuxFileSystem: the engine's file system on Linux.
#pragma once

#include "engine/file_system.h"
#include "platform/icu/icu_name_order.h"
#include "platform/posix/folder_descriptors.h"

namespace dunmere {

/// Folders by getdents64 and statx, volumes by the mount table, names by ICU. Thread-safe. Linux marks no folder as a
/// package, so EntryAttributes::isPackage is never set.
class LinuxFileSystem final : public FileSystem {
 public:
  LinuxFileSystem();

  /// Besides what the contract says: the folder stays open until it is destroyed, and at most
  /// FolderDescriptors::budgetOfProcess() of the folders below it.
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override;

  /// Mounts that are no volumes to people (isOfferedMount()) are left out already.
  std::optional<std::vector<VolumeMount>> mountedVolumes() override;

  /// Of a mount point that is not offered only that is told: such a file system is not touched. `url` is not
  /// standardized through links. A volume without a label has the last component of its mount point for a name; "/"
  /// without a label is "Filesystem root".
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override;
  std::expected<VolumeValues, SweepError> volumeValues(const VolumeMount& volume) override;

  FileUrl homeFolder() override;
  Instant now() override;
  std::string nameSortKey(std::string_view name) override;
  /// To nice 10 and the lowest disk priority but idle; never raises either.
  void enterUtilityPriority() noexcept override;

 private:
  FolderDescriptors descriptors_;
  const IcuNameOrder nameOrder_;
};

}  // namespace dunmere
