// Attribute requests: asks the system for the attributes that attribute_records.h reads.
#pragma once

#include <sys/attr.h>

#include <cstddef>
#include <expected>
#include <optional>
#include <span>
#include <string>

#include "engine/file_system.h"
#include "platform/macos/attribute_records.h"

namespace dunmere {

/// Fills `buffer` with records of the next entries of the open folder `folder`. Gives their number, 0 at the end; fails
/// with an errno value. The descriptor keeps the position.
std::expected<std::size_t, int> readAttributeRecords(int folder, EntryDetail detail, std::span<std::byte> buffer);

/// Attributes of `name` in the open folder `folder`, itself if it is a link. Nothing is opened; none when they cannot
/// be read. Any thread.
std::optional<EntryAttributes> entryAttributes(int folder, const std::string& name);

/// Attributes of what `name` in the open folder `folder` leads to in the end.
struct FollowedEntry {
  std::string fullPath;  ///< without any link; empty when it is longer than the system can tell
  EntryAttributes attributes;
};

/// Follows links. Nothing is opened for reading; none when the way leads nowhere. Any thread.
std::optional<FollowedEntry> followedEntry(int folder, const std::string& name);

/// The name of the volume mounted at `mountPoint`; none when it has none or cannot be read. May wait for ever.
std::optional<std::string> volumeNameAt(const std::string& mountPoint);

}  // namespace dunmere
