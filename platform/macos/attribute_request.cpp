#include "platform/macos/attribute_request.h"

#include <sys/param.h>
#include <unistd.h>
#if __has_include(<sys/vnode.h>)
#include <sys/vnode.h>
#endif

#include <array>
#include <cerrno>

#include "platform/macos/attribute_layout.h"

namespace dunmere {
namespace {

namespace layout = attribute_layout;

static_assert(layout::kName == ATTR_CMN_NAME);
static_assert(layout::kObjectType == ATTR_CMN_OBJTYPE);
static_assert(layout::kFinderInfo == ATTR_CMN_FNDRINFO);
static_assert(layout::kFullPath == ATTR_CMN_FULLPATH);
static_assert(layout::kError == ATTR_CMN_ERROR);
static_assert(layout::kReturned == ATTR_CMN_RETURNED_ATTRS);
static_assert(layout::kAllocatedSize == ATTR_FILE_ALLOCSIZE);
static_assert(layout::kDataLength == ATTR_FILE_DATALENGTH);
static_assert(layout::kVolumeName == ATTR_VOL_NAME);
static_assert(layout::kVolumeInfo == ATTR_VOL_INFO);
#if __has_include(<sys/vnode.h>)  // the cross compiler brings most headers, but not this one
static_assert(layout::kRegularFile == VREG && layout::kFolder == VDIR && layout::kSymbolicLink == VLNK);
#endif
static_assert(sizeof(layout::ReturnedSet) == sizeof(attribute_set_t));
static_assert(offsetof(layout::ReturnedSet, file) == offsetof(attribute_set_t, fileattr));
static_assert(sizeof(layout::TextReference) == sizeof(attrreference_t));
static_assert(offsetof(layout::TextReference, length) == offsetof(attrreference_t, attr_length));

constexpr std::uint32_t kKindOfEntry = layout::kReturned | layout::kObjectType | layout::kFinderInfo;
constexpr std::uint32_t kSizes = layout::kAllocatedSize | layout::kDataLength;

attrlist request(std::uint32_t common, std::uint32_t file) {
  attrlist list{};
  list.bitmapcount = ATTR_BIT_MAP_COUNT;
  list.commonattr = common;
  list.fileattr = file;
  return list;
}

struct OneRecord {
  // Room for a path as long as the system tells one, beside the fixed values.
  alignas(8) std::array<std::byte, MAXPATHLEN + 256> bytes;

  std::optional<AttributeRecord> read(int folder, const std::string& name, std::uint32_t common,
                                      unsigned long options) {
    attrlist list = request(common, kSizes);
    if (::getattrlistat(folder, name.c_str(), &list, bytes.data(), bytes.size(), options) != 0) return std::nullopt;
    std::span<const std::byte> answer = bytes;
    return takeAttributeRecord(answer);
  }
};

}  // namespace

std::expected<std::size_t, int> readAttributeRecords(int folder, EntryDetail detail, std::span<std::byte> buffer) {
  attrlist list = request(kKindOfEntry | layout::kError | layout::kName, detail == EntryDetail::sizes ? kSizes : 0);
  int count = -1;
  do {
    count = ::getattrlistbulk(folder, &list, buffer.data(), buffer.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::unexpected(errno);
  return static_cast<std::size_t>(count);
}

std::optional<EntryAttributes> entryAttributes(int folder, const std::string& name) {
  OneRecord answer;
  const auto record = answer.read(folder, name, kKindOfEntry, FSOPT_NOFOLLOW);
  return record ? record->attributes : std::nullopt;
}

std::optional<FollowedEntry> followedEntry(int folder, const std::string& name) {
  OneRecord answer;
  auto record = answer.read(folder, name, kKindOfEntry | layout::kFullPath, 0);
  if (!record) record = answer.read(folder, name, kKindOfEntry, 0);
  if (!record || !record->attributes) return std::nullopt;
  return FollowedEntry{.fullPath = std::string(record->fullPath), .attributes = *record->attributes};
}

std::optional<std::string> volumeNameAt(const std::string& mountPoint) {
  attrlist list{};
  list.bitmapcount = ATTR_BIT_MAP_COUNT;
  list.volattr = layout::kVolumeInfo | layout::kVolumeName;
  alignas(8) std::array<std::byte, MAXPATHLEN + 256> answer;
  if (::getattrlist(mountPoint.c_str(), &list, answer.data(), answer.size(), 0) != 0) return std::nullopt;
  return volumeNameIn(answer);
}

}  // namespace dunmere
