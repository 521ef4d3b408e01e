// LinuxOpenFolder: one folder of a walk or a listing, read with getdents64 and statx by descriptor.
#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/file_system.h"
#include "platform/linux/mount_table.h"
#include "platform/posix/folder_descriptors.h"
#include "platform/posix/posix_open_folder.h"

namespace dunmere {

class LinuxOpenFolder final : public PosixOpenFolder {
 public:
  using Automounts = std::shared_ptr<const AutomountNames>;  // null: none

  /// Opens a folder by path, following links. `automounts`: where volumes may mount themselves below it, which no
  /// openChild() makes them do.
  static std::expected<std::shared_ptr<LinuxOpenFolder>, SweepError> open(FolderDescriptors& descriptors,
                                                                          const FileUrl& url, EntryDetail detail,
                                                                          Automounts automounts = nullptr);

  std::expected<void, SweepError> readEntries(EntryBatch& batch) override;
  /// Only on local file systems.
  std::optional<FolderStamp> stamp() override;
  std::expected<void, SweepError> measure(EntryBatch& batch) override;
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) override;
  std::optional<EntryAttributes> attributes(std::string_view name) override;
  LinkTarget resolveLink(std::string_view name) override;
  bool takesDiskSpace() override;

  using PosixOpenFolder::descriptor;

  LinuxOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent, std::string name,
                  EntryDetail detail, Automounts automounts, bool mayMountItself);

 private:
  std::expected<Pin, int> readingDescriptor();
  bool isAutomounter();
  void addEntries(int folder, std::string_view records, EntryBatch& batch);

  const EntryDetail detail_;
  const Automounts automounts_;
  bool isAutomounter_ = false;  // set before anybody else sees the folder

  // The reader's alone.
  std::int64_t nextOffset_ = 0;
  std::uint64_t readGeneration_ = 0;
  bool ended_ = false;
  bool isSearchable_ = true;
};

}  // namespace dunmere
