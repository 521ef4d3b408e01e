// What Linux tells of one entry of an open folder, asked by the folder's descriptor and the entry's name.
#pragma once

#include <expected>
#include <optional>
#include <string>

#include "engine/file_system.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

/// Attributes of `name` in the open folder `folder`; of `folder` itself (any descriptor) when `name` is empty. Sizes
/// are read of regular files only. Nothing is opened or mounted; none when the attributes cannot be read. Any thread.
std::optional<EntryAttributes> entryStatus(int folder, const char* name);

/// The stamp of an open folder, as OpenFolder::stamp() promises it: only on local file systems. Any thread.
std::optional<FolderStamp> folderStamp(int folder);

/// As OpenFolder::takesDiskSpace(). Any thread.
bool takesDiskSpace(int folder);

/// Whether folders in this one may mount a volume when they are opened (autofs). Any thread.
bool isAutomounter(int folder);

/// Finds what `name` in the open folder `folder` leads to in the end, without opening it for reading. May wait for the
/// disks and servers on the way. Fails with an errno value. Any thread.
std::expected<UniqueDescriptor, int> findTarget(int folder, const std::string& name);

/// Describes a target that was found; `ownUrl` is the path of the link, for a target without a path. Waits for nothing.
/// Any thread.
LinkTarget describeTarget(const UniqueDescriptor& target, FileUrl ownUrl);

/// What the kernel calls an open file: its path, with a mark when it is deleted, or a word for a file without a path.
/// Fails with an errno value, ENAMETOOLONG from PATH_MAX on. Any thread.
std::expected<std::string, int> kernelPath(const UniqueDescriptor& file);

}  // namespace dunmere
