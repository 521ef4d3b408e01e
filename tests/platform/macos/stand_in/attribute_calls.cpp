// The calls of macOS that platform/macos makes for folders and entries, acted out with those of Linux. What they answer
// and how they fail is as documented; what the system does beyond that is not known here.
#include <dirent.h>
#include <fcntl.h>
#include <sys/attr.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include "platform/posix/unique_descriptor.h"
#include "tests/platform/macos/macos_attribute_buffer.h"

namespace {

using dunmere::UniqueDescriptor;
using dunmere::test::AttributeBuffer;
using dunmere::test::RecordFields;

std::uint32_t objectType(mode_t mode) {
  constexpr std::array<std::pair<mode_t, std::uint32_t>, 7> kTypes = {
      {{S_IFREG, 1}, {S_IFDIR, 2}, {S_IFBLK, 3}, {S_IFCHR, 4}, {S_IFLNK, 5}, {S_IFSOCK, 6}, {S_IFIFO, 7}}};
  for (const auto& [format, type] : kTypes) {
    if ((mode & S_IFMT) == format) return type;
  }
  return 8;
}

RecordFields recordOf(const struct stat& status, const attrlist& list) {
  RecordFields fields;
  if (list.commonattr & ATTR_CMN_OBJTYPE) fields.objectType = objectType(status.st_mode);
  if (list.commonattr & ATTR_CMN_FNDRINFO) fields.finderFlags = 0;
  if (S_ISDIR(status.st_mode)) return fields;  // a folder has none of a file's attributes
  if (list.fileattr & ATTR_FILE_ALLOCSIZE) fields.allocatedBytes = std::int64_t{512} * status.st_blocks;
  if (list.fileattr & ATTR_FILE_DATALENGTH) fields.dataLength = status.st_size;
  return fields;
}

/// -1 with ERANGE when there is no room, else 0.
int answer(const RecordFields& fields, void* buffer, std::size_t size) {
  const auto bytes = AttributeBuffer().add(fields).bytes();
  if (bytes.size() > size) {
    errno = ERANGE;
    return -1;
  }
  std::memcpy(buffer, bytes.data(), bytes.size());
  return 0;
}

RecordFields recordOfEntry(int folder, const char* name, const attrlist& list) {
  struct stat status{};
  RecordFields fields;
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    fields = recordOf(status, list);
  } else {
    fields.error = static_cast<std::uint32_t>(errno);
  }
  fields.name = name;
  return fields;
}

/// None, with ENOENT, for what has no path.
std::optional<std::string> pathOf(int descriptor) {
  std::array<char, PATH_MAX> text{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = ::readlink(link.c_str(), text.data(), text.size() - 1);
  if (length > 0 && text[0] == '/') return text.data();
  errno = ENOENT;
  return std::nullopt;
}

bool isRequest(const attrlist& list, bool isBulk) {
  constexpr std::uint32_t kNeededInBulk = ATTR_CMN_NAME | ATTR_CMN_RETURNED_ATTRS;
  const bool isComplete = !isBulk || (list.commonattr & kNeededInBulk) == kNeededInBulk;
  if (list.bitmapcount == ATTR_BIT_MAP_COUNT && list.reserved == 0 && list.volattr == 0 && isComplete) return true;
  errno = EINVAL;
  return false;
}

}  // namespace

int getattrlistbulk(int folder, void* list, void* buffer, std::size_t size, std::uint64_t) {
  const auto& request = *static_cast<const attrlist*>(list);
  struct stat status{};
  if (!isRequest(request, true) || ::fstatat(folder, ".", &status, 0) != 0) return -1;  // must be searchable
  int count = 0;
  auto* free = static_cast<std::byte*>(buffer);
  for (off_t position = ::lseek(folder, 0, SEEK_CUR);;) {
    alignas(dirent64) char records[32 * 1024];
    const ssize_t length = ::getdents64(folder, records, sizeof records);
    if (length <= 0) return length < 0 && count == 0 ? -1 : count;
    for (ssize_t at = 0; at < length;) {
      const auto* const record = reinterpret_cast<const dirent64*>(records + at);
      at += record->d_reclen;
      const std::string_view name = record->d_name;
      if (name != "." && name != "..") {
        const auto bytes = AttributeBuffer().add(recordOfEntry(folder, record->d_name, request)).bytes();
        if (bytes.size() > size) {  // no room: it begins the next answer
          ::lseek(folder, position, SEEK_SET);
          errno = ERANGE;
          return count == 0 ? -1 : count;
        }
        std::memcpy(free, bytes.data(), bytes.size());
        free += bytes.size();
        size -= bytes.size();
        ++count;
      }
      position = record->d_off;
    }
  }
}

int getattrlistat(int folder, const char* path, void* list, void* buffer, std::size_t size, unsigned long options) {
  const auto& request = *static_cast<const attrlist*>(list);
  if (!isRequest(request, false)) return -1;
  const bool isFollowed = (options & FSOPT_NOFOLLOW) == 0;
  const UniqueDescriptor entry(::openat(folder, path, O_PATH | O_CLOEXEC | (isFollowed ? 0 : O_NOFOLLOW)));
  struct stat status{};
  if (!entry || ::fstat(entry.get(), &status) != 0) return -1;
  RecordFields fields = recordOf(status, request);
  if ((request.commonattr & ATTR_CMN_FULLPATH) && !(fields.fullPath = pathOf(entry.get()))) return -1;
  return answer(fields, buffer, size);
}

int getattrlist(const char*, void*, void*, std::size_t, unsigned) {
  errno = ENOTSUP;  // asked only of volumes, which do not take part here
  return -1;
}
