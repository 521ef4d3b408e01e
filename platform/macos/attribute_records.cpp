#include "platform/macos/attribute_records.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "engine/ascii.h"
#include "platform/macos/attribute_layout.h"

namespace dunmere {
namespace {

using namespace attribute_layout;

/// Reads the values of one record in their order. What is not there reads as zero and makes the record malformed.
class RecordReader {
 public:
  explicit RecordReader(std::span<const std::byte> record) : record_(record) {}

  template <typename Value>
  Value take() {
    Value value{};
    if (record_.size() - position_ < sizeof value) {
      isMalformed_ = true;
      return value;
    }
    std::memcpy(&value, record_.data() + position_, sizeof value);  // values are aligned to four bytes only
    position_ += sizeof value;
    return value;
  }

  std::string_view takeText() {
    const auto start = static_cast<std::int64_t>(position_);
    const auto [offset, length] = take<TextReference>();
    const std::int64_t begin = start + offset;
    if (isMalformed_ || begin < 0 || begin + length > static_cast<std::int64_t>(record_.size())) {
      isMalformed_ = true;
      return {};
    }
    const std::string_view text(reinterpret_cast<const char*>(record_.data() + begin), length);
    return text.substr(0, text.find('\0'));
  }

  bool isMalformed() const { return isMalformed_; }

 private:
  std::span<const std::byte> record_;
  std::size_t position_ = 0;
  bool isMalformed_ = false;
};

/// A record begins with its own length, which counts itself.
std::optional<std::span<const std::byte>> takeBytesOfRecord(std::span<const std::byte>& buffer) {
  std::uint32_t length = 0;
  if (buffer.size() < sizeof length) return std::nullopt;
  std::memcpy(&length, buffer.data(), sizeof length);
  if (length < sizeof length || length > buffer.size()) return std::nullopt;
  const auto record = buffer.first(length);
  buffer = buffer.subspan(length);
  return record.subspan(sizeof length);
}

/// A value that was never asked for has a length that nobody here knows.
bool holdsOnlyWhatIsAskedFor(const ReturnedSet& returned) {
  constexpr std::uint32_t kCommon = kName | kObjectType | kFinderInfo | kFullPath | kError | kReturned;
  constexpr std::uint32_t kFile = kAllocatedSize | kDataLength;
  return (returned.common & ~kCommon) == 0 && returned.volume == 0 && returned.directory == 0 &&
         (returned.file & ~kFile) == 0 && returned.fork == 0;
}

EntryKind kindOf(std::uint32_t objectType) {
  switch (objectType) {
    case kRegularFile:
      return EntryKind::regularFile;
    case kFolder:
      return EntryKind::folder;
    case kSymbolicLink:
      return EntryKind::symbolicLink;
    default:  // pipes, sockets, devices, and what later systems may add
      return EntryKind::other;
  }
}

using FinderInfo = std::array<std::byte, kFinderInfoBytes>;

bool hasBundleBit(const FinderInfo& info) {
  return (std::to_integer<unsigned>(info[kFinderFlagsOffset]) & kHasBundleInHighByte) != 0;
}

/// Folders that the desktop shows as one document. Left out on purpose are extensions that ordinary folders use as well
/// (download, numbers, pages, service …), because a package counts no bytes.
bool isDocument(std::string_view name) {
  return hasExtension(name,
                      ".aplibrary.band.docset.dsym.fcpbundle.imovielibrary.logicx.migratedphotolibrary.musiclibrary"
                      ".photolibrary.photoslibrary.playground.pvm.rtfd.sparsebundle.tvlibrary.vmwarevm.xcarchive"
                      ".xcodeproj.xctest.xcworkspace.");
}

/// A negative number of bytes is none at all.
std::int64_t sizeOrAbsent(std::int64_t bytes) {
  return bytes < 0 ? EntryAttributes::kAbsent : bytes;
}

EntryAttributes attributesOf(EntryKind kind, std::string_view name, const FinderInfo& info, std::int64_t allocated,
                             std::int64_t length) {
  EntryAttributes attributes{.kind = kind};
  if (kind == EntryKind::folder) attributes.isPackage = hasBundleBit(info) || isDocument(name);
  if (kind == EntryKind::regularFile) {  // a link has a length too, that of its text
    attributes.allocatedBytes = sizeOrAbsent(allocated);
    attributes.logicalBytes = sizeOrAbsent(length);
  }
  return attributes;
}

/// One line for each value, in the order in which they are packed.
std::optional<AttributeRecord> parse(RecordReader reader) {
  const auto returned = reader.take<ReturnedSet>();
  if (reader.isMalformed() || !holdsOnlyWhatIsAskedFor(returned)) return std::nullopt;
  const auto has = [&](std::uint32_t bit) { return (returned.common & bit) != 0; };
  const auto hasFile = [&](std::uint32_t bit) { return (returned.file & bit) != 0; };

  AttributeRecord record;
  const auto error = has(kError) ? reader.take<std::uint32_t>() : 0;
  if (has(kName)) record.name = reader.takeText();
  const auto objectType = has(kObjectType) ? reader.take<std::uint32_t>() : 0;
  const auto finderInfo = has(kFinderInfo) ? reader.take<FinderInfo>() : FinderInfo{};
  if (has(kFullPath)) record.fullPath = reader.takeText();
  const auto allocated = hasFile(kAllocatedSize) ? reader.take<std::int64_t>() : EntryAttributes::kAbsent;
  const auto length = hasFile(kDataLength) ? reader.take<std::int64_t>() : EntryAttributes::kAbsent;
  if (reader.isMalformed()) return std::nullopt;

  if (error == 0 && has(kObjectType)) {
    record.attributes = attributesOf(kindOf(objectType), record.name, finderInfo, allocated, length);
  }
  return record;
}

/// Names come from file systems and servers of every kind. Taken at its word, one like "../.." would lead elsewhere.
bool canNameAnEntry(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && !name.contains('/');
}

}  // namespace

std::optional<AttributeRecord> takeAttributeRecord(std::span<const std::byte>& buffer) {
  const auto record = takeBytesOfRecord(buffer);
  return record ? parse(RecordReader(*record)) : std::nullopt;
}

bool addAttributeRecords(std::span<const std::byte> buffer, std::size_t count, EntryDetail detail, EntryBatch& batch) {
  for (; count > 0; --count) {
    const auto record = takeAttributeRecord(buffer);
    if (!record) return false;
    if (!canNameAnEntry(record->name)) continue;
    if (record->attributes) {
      batch.add(record->name, *record->attributes);
    } else if (detail == EntryDetail::kinds) {
      batch.add(record->name, EntryAttributes{.kind = EntryKind::other});
    }
  }
  return true;
}

std::optional<std::string> volumeNameIn(std::span<const std::byte> buffer) {
  const auto record = takeBytesOfRecord(buffer);
  if (!record) return std::nullopt;
  RecordReader reader(*record);
  const std::string_view name = reader.takeText();
  return reader.isMalformed() || name.empty() ? std::nullopt : std::optional(std::string(name));
}

}  // namespace dunmere
