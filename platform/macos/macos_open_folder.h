// MacosOpenFolder: one folder of a walk or a listing, read with getattrlistbulk by descriptor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/file_system.h"
#include "platform/posix/posix_open_folder.h"

namespace dunmere {

/// In a walk, a folder whose entries lie in the cloud only is empty: it holds nothing on this disk, and is not fetched.
/// By its path it does not open (EDEADLK).
class MacosOpenFolder final : public PosixOpenFolder {
 public:
  /// Opens a folder by path, following links.
  static std::expected<std::shared_ptr<OpenFolder>, SweepError> open(FolderDescriptors& descriptors, const FileUrl& url,
                                                                     EntryDetail detail);

  /// Fails with EACCES for a folder that may be read but not searched: the system tells no name without its attributes.
  std::expected<void, SweepError> readEntries(EntryBatch& batch) override;
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) override;
  std::optional<EntryAttributes> attributes(std::string_view name) override;
  LinkTarget resolveLink(std::string_view name) override;

  MacosOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent, std::string name,
                  EntryDetail detail);

 private:
  std::expected<void, SweepError> acceptUnlessElsewhere(std::expected<void, SweepError> opened);
  std::expected<void, SweepError> end(int error);
  std::expected<Pin, int> readingDescriptor();
  bool addRecords(std::span<const std::byte> records, std::size_t count, EntryBatch& batch);

  const EntryDetail detail_;

  // The reader's alone.
  std::uint64_t readGeneration_ = 0;
  std::size_t recordsRead_ = 0;  // returned or left out
  std::size_t toSkip_ = 0;       // already read with an earlier descriptor
  bool ended_ = false;
};

}  // namespace dunmere
