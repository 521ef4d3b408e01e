// entryStatus: one entry's attributes by its folder's descriptor and its name.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/file_system.h"

namespace dunmere {

/// Attributes of `name` in the open folder `folder`; of `folder` itself (any descriptor) when `name` is empty. Sizes
/// are read of regular files only. Nothing is opened or mounted; none when the attributes cannot be read. Any thread.
std::optional<EntryAttributes> entryStatus(int folder, const char* name);

/// The same, for an entry that was a regular file; none when it is one no more.
std::optional<EntryAttributes> regularFileStatus(int folder, const char* name);

/// Identity and time of change of the open folder, whatever the system promises of it.
std::optional<FolderStamp> folderStamp(int folder);

}  // namespace dunmere
