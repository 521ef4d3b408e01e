// HeldItem: an item and its folder held open, so that it is recognised whatever happens to its path.
#pragma once

#include <expected>
#include <string>
#include <system_error>

#include "engine/file_url.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// Both descriptors are O_PATH: nothing is read or written through them. While the item is held, its inode number is
/// not used again, even when it is deleted, and its volume cannot be unmounted.
struct HeldItem {
  UniqueDescriptor folder;
  std::string name;       ///< within the folder
  UniqueDescriptor item;  ///< the item itself, also when it is a link
};

/// Holds the item at `url`; links in the folders above are followed. Fails with the system's code (EINVAL for a
/// relative path or one ending in "." or "..", EBUSY for the root folder, which cannot be moved). May wait for ever
/// where the file system does not answer. Any thread.
std::expected<HeldItem, std::error_code> holdItem(const FileUrl& url);

/// Whether the entry `name` of the open folder `folder` is the held item. Fails with the system's code (ENOENT when
/// there is no such entry).
std::expected<bool, std::error_code> isHeldItem(const HeldItem& held, const UniqueDescriptor& folder,
                                                const std::string& name);

/// Where an open folder is now: an absolute path without links. Fails with ENOENT when it was deleted or cannot be
/// reached from this process's root, ENAMETOOLONG from PATH_MAX on.
std::expected<std::string, std::error_code> currentPath(const UniqueDescriptor& folder);

}  // namespace dunmere
