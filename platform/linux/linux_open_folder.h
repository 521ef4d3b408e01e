// LinuxOpenFolder: one folder of a walk or a listing, read with getdents64 and statx by descriptor.
#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/file_system.h"
#include "platform/linux/local_mounts.h"
#include "platform/posix/folder_descriptors.h"
#include "platform/posix/posix_open_folder.h"

namespace dunmere {

class LinuxOpenFolder final : public PosixOpenFolder {
 public:
  /// Opens a folder by path, following links.
  static std::expected<std::shared_ptr<LinuxOpenFolder>, SweepError> open(FolderDescriptors& descriptors,
                                                                          const FileUrl& url, EntryDetail detail);

  /// The same when it lies on one of `mounts` and all the way to it is known to the system already; null rather than
  /// wait for anything else, and when it cannot be opened.
  static std::shared_ptr<LinuxOpenFolder> openAtOnce(FolderDescriptors& descriptors, const FileUrl& url,
                                                     EntryDetail detail, const LocalMounts& mounts);

  std::expected<void, SweepError> readEntries(EntryBatch& batch) override;
  /// Only for a file system of this machine's own (isLocal()).
  std::optional<FolderStamp> stamp() override;
  std::expected<void, SweepError> measure(EntryBatch& batch) override;
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) override;
  std::optional<EntryAttributes> attributes(std::string_view name) override;
  LinkTarget resolveLink(std::string_view name) override;

  /// As resolveLink(), but none when the answer would have to be waited for.
  std::optional<LinkTarget> knownLinkTarget(std::string_view name);

  /// Whether it lies on a file system of this machine's own, which always answers. May itself wait.
  bool isLocal();
  /// Adds the mount that it lies on.
  void addMountTo(LocalMounts& mounts);

  LinuxOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent, std::string name,
                  EntryDetail detail);

 private:
  std::expected<Pin, int> readingDescriptor();
  LinkTarget linkTarget(std::string_view name, const std::expected<UniqueDescriptor, int>& target) const;
  void addEntries(int folder, std::string_view records, EntryBatch& batch);

  const EntryDetail detail_;

  // The reader's alone.
  std::int64_t nextOffset_ = 0;
  std::uint64_t readGeneration_ = 0;
  bool ended_ = false;
};

}  // namespace dunmere
