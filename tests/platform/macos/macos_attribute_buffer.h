// AttributeBuffer: builds buffers as getattrlistbulk(2) documents them, and broken ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/macos/attribute_layout.h"

namespace dunmere::test {

/// What one record says. An attribute that is none is not packed.
struct RecordFields {
  std::optional<std::uint32_t> error;
  std::optional<std::string> name;
  std::optional<std::uint32_t> objectType;
  std::optional<std::uint16_t> finderFlags;
  std::optional<std::string> fullPath;
  std::optional<std::int64_t> allocatedBytes;
  std::optional<std::int64_t> dataLength;
};

class AttributeBuffer {
 public:
  /// Appends a record: length, returned set, values in the order of their bits, texts, zero bytes up to a multiple of
  /// eight.
  AttributeBuffer& add(const RecordFields& fields) {
    const std::size_t start = bytes_.size();
    append(std::uint32_t{0});
    append(returnedSet(fields));
    if (fields.error) append(*fields.error);
    const std::size_t name = reserveReference(fields.name);
    if (fields.objectType) append(*fields.objectType);
    if (fields.finderFlags) appendFinderInfo(*fields.finderFlags);
    const std::size_t fullPath = reserveReference(fields.fullPath);
    if (fields.allocatedBytes) append(*fields.allocatedBytes);
    if (fields.dataLength) append(*fields.dataLength);
    appendText(name, fields.name);
    appendText(fullPath, fields.fullPath);
    while (bytes_.size() % 8 != 0) bytes_.push_back(std::byte{0});
    put(start, static_cast<std::uint32_t>(bytes_.size() - start));
    return *this;
  }

  AttributeBuffer& addFile(const std::string& name, std::int64_t allocatedBytes, std::int64_t dataLength) {
    RecordFields fields = entry(name, attribute_layout::kRegularFile);
    fields.allocatedBytes = allocatedBytes;
    fields.dataLength = dataLength;
    return add(fields);
  }

  AttributeBuffer& addEntry(const std::string& name, std::uint32_t objectType) { return add(entry(name, objectType)); }

  AttributeBuffer& addFolder(const std::string& name, std::uint16_t finderFlags) {
    RecordFields fields = entry(name, attribute_layout::kFolder);
    fields.finderFlags = finderFlags;
    return add(fields);
  }

  static RecordFields entry(const std::string& name, std::uint32_t objectType) {
    RecordFields fields;
    fields.name = name;
    fields.objectType = objectType;
    return fields;
  }

  /// Overwrites what stands at `offset`.
  template <typename Value>
  AttributeBuffer& put(std::size_t offset, const Value& value) {
    std::memcpy(bytes_.data() + offset, &value, sizeof value);
    return *this;
  }

  /// A block of exactly these bytes, so that a look beyond its end is seen by the address sanitizer.
  std::vector<std::byte> bytes() const { return {bytes_.begin(), bytes_.end()}; }
  std::size_t size() const { return bytes_.size(); }

 private:
  static attribute_layout::ReturnedSet returnedSet(const RecordFields& fields) {
    using namespace attribute_layout;
    const auto bit = [](const auto& field, std::uint32_t value) { return field ? value : 0u; };
    return {.common = kReturned | bit(fields.error, kError) | bit(fields.name, kName) |
                      bit(fields.objectType, kObjectType) | bit(fields.finderFlags, kFinderInfo) |
                      bit(fields.fullPath, kFullPath),
            .volume = 0,
            .directory = 0,
            .file = bit(fields.allocatedBytes, kAllocatedSize) | bit(fields.dataLength, kDataLength),
            .fork = 0};
  }

  template <typename Value>
  void append(const Value& value) {
    bytes_.resize(bytes_.size() + sizeof value);
    put(bytes_.size() - sizeof value, value);
  }

  void appendFinderInfo(std::uint16_t flags) {
    const std::size_t start = bytes_.size();
    bytes_.resize(start + attribute_layout::kFinderInfoBytes);
    bytes_[start + 8] = static_cast<std::byte>(flags >> 8);  // big-endian
    bytes_[start + 9] = static_cast<std::byte>(flags);
  }

  std::size_t reserveReference(const std::optional<std::string>& text) {
    if (text) append(attribute_layout::TextReference{});
    return bytes_.size() - sizeof(attribute_layout::TextReference);
  }

  void appendText(std::size_t reference, const std::optional<std::string>& text) {
    if (!text) return;
    put(reference, attribute_layout::TextReference{.offset = static_cast<std::int32_t>(bytes_.size() - reference),
                                                   .length = static_cast<std::uint32_t>(text->size() + 1)});
    for (const char c : *text) bytes_.push_back(static_cast<std::byte>(c));
    bytes_.push_back(std::byte{0});
    while (bytes_.size() % 4 != 0) bytes_.push_back(std::byte{0});
  }

  std::vector<std::byte> bytes_;
};

}  // namespace dunmere::test
