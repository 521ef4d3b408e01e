// LocatedItem: an item and its folder held open, so that it stays known whatever happens to its path.
#pragma once

#include <expected>
#include <string>
#include <system_error>

#include "engine/file_url.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// Neither descriptor reads or writes anything; both only name.
struct LocatedItem {
  UniqueDescriptor folder;
  std::string name;          ///< within the folder
  std::string physicalPath;  ///< the folder without any link, and the name; the item itself is never resolved
  UniqueDescriptor item;     ///< the item itself, also when it is a link
};

/// Finds the item at `url`. Fails with the system's code (EINVAL for a relative path or one ending in "." or "..",
/// EBUSY for the root folder, which cannot be moved).
std::expected<LocatedItem, std::error_code> locateItem(const FileUrl& url);

/// Whether the name in the folder still leads to this very item. Fails with the system's code when that cannot be told.
std::expected<bool, std::error_code> isAtItsPlace(const LocatedItem& located);

}  // namespace dunmere
