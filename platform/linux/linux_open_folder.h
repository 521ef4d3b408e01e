// LinuxOpenFolder: one folder of a walk or a listing, read with getdents64 and statx by descriptor.
#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/file_system.h"
#include "platform/linux/folder_descriptors.h"

namespace dunmere {

/// Keeps the folders above it alive: when its descriptor was closed to save descriptors, it is opened anew from the
/// nearest one above that is still open. Must not outlive `descriptors`.
class LinuxOpenFolder final : public OpenFolder, public std::enable_shared_from_this<LinuxOpenFolder> {
 public:
  /// Opens a folder by path; its descriptor stays open as long as it lives, since a path may lead elsewhere later.
  static std::expected<std::shared_ptr<OpenFolder>, SweepError> open(FolderDescriptors& descriptors, const FileUrl& url,
                                                                     EntryDetail detail);
  ~LinuxOpenFolder() override;

  std::expected<void, SweepError> readEntries(EntryBatch& batch) override;
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) override;
  std::optional<EntryAttributes> attributes(std::string_view name) override;
  LinkTarget resolveLink(std::string_view name) override;

  LinuxOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<LinuxOpenFolder> parent, std::string name,
                  EntryDetail detail);

 private:
  using Pin = FolderDescriptors::Pin;

  std::expected<Pin, int> descriptor();
  std::expected<Pin, int> reopen();
  std::expected<Pin, int> readingDescriptor();
  std::expected<UniqueDescriptor, int> openEntry(int folder, const std::string& name) const;
  void addEntries(int folder, std::string_view records, EntryBatch& batch);
  FileUrl url() const;
  SweepError failure(FileUrl path, int error) const;

  FolderDescriptors& descriptors_;
  std::shared_ptr<LinuxOpenFolder> parent_;  // none for a folder opened by path
  const std::string name_;                   // below the parent; the whole path without one
  const EntryDetail detail_;
  FolderDescriptors::Slot slot_;
  Pin rootPin_;  // set when there is no parent

  // The reader's alone.
  std::int64_t nextOffset_ = 0;
  std::uint64_t readGeneration_ = 0;
  bool ended_ = false;
};

}  // namespace dunmere
