// Attribute records: what getattrlistbulk and its kin put into a buffer, read for the engine.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/file_system.h"

namespace dunmere {

/// One entry as its record tells it. Views point into the buffer.
struct AttributeRecord {
  std::string_view name;                      ///< empty when the record holds none
  std::string_view fullPath;                  ///< likewise
  std::optional<EntryAttributes> attributes;  ///< none when the system could not read them; sizes of regular files only
};

// None of these calls the system, keeps anything, or looks beyond its buffer, whatever the bytes in it.

/// Takes the first record off `buffer`. None when no whole, well-formed record stands there.
std::optional<AttributeRecord> takeAttributeRecord(std::span<const std::byte>& buffer);

/// Adds the entries of the first `count` records to `batch`, as OpenFolder::readEntries() wants them; a record whose
/// name could name no entry is passed over. False at the first malformed record; the entries before it were added.
bool addAttributeRecords(std::span<const std::byte> buffer, std::size_t count, EntryDetail detail, EntryBatch& batch);

/// The name in the answer to a request for nothing but a volume's name. None when it is malformed or empty.
std::optional<std::string> volumeNameIn(std::span<const std::byte> buffer);

}  // namespace dunmere
