// PosixOpenFolder: one folder of a walk or a listing, held by a descriptor that may be closed and opened again.
#pragma once

#include <expected>
#include <memory>
#include <string>

#include "engine/file_system.h"
#include "platform/posix/folder_descriptors.h"

namespace dunmere {

/// What every system's open folders share; how a folder is read and an entry looked up is left to the system's own
/// class. Keeps the folders above it alive: when its descriptor was closed to save descriptors, it is opened again from
/// the nearest one above that is still open. Must not outlive `descriptors`.
class PosixOpenFolder : public OpenFolder, public std::enable_shared_from_this<PosixOpenFolder> {
 public:
  ~PosixOpenFolder() override;

 protected:
  using Pin = FolderDescriptors::Pin;

  /// `name` is one below `parent`, or the whole path of a folder without one. `mayMountItself`: opening it could make a
  /// volume mount itself there, and must not.
  PosixOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent, std::string name,
                  bool mayMountItself = false);

  /// Opens a folder without parent by its path, following links. Its descriptor stays open as long as it lives, since a
  /// path may lead elsewhere later. To be called once, before anything else.
  std::expected<void, SweepError> openByPath();
  /// Opens a folder that has a parent; not if it is a link. To be called once, before anything else.
  std::expected<void, SweepError> openBelowParent();

  /// The open descriptor, opened again if need be: with a new generation it stands at the first entry.
  std::expected<Pin, int> descriptor();

  FolderDescriptors& descriptors() const { return descriptors_; }
  FileUrl url() const;
  /// The failure of a call about this folder, from its errno value.
  std::unexpected<SweepError> failure(int error) const;

 private:
  std::expected<UniqueDescriptor, int> openIn(int folder) const;
  static void releaseInTurn(std::shared_ptr<PosixOpenFolder> parent) noexcept;

  FolderDescriptors& descriptors_;
  std::shared_ptr<PosixOpenFolder> parent_;
  const std::string name_;
  const bool mayMountItself_;
  FolderDescriptors::Slot slot_;
};

}  // namespace dunmere
