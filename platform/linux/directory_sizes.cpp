#include "platform/linux/directory_sizes.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <optional>

#include "platform/linux/trash_record.h"
#include "platform/posix/paths.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

namespace {

constexpr const char* kFileName = "directorysizes";

std::string lineOf(const DirectorySize& size) {
  return std::to_string(size.bytes) + " " + std::to_string(size.recorded) + " " + percentEncoded(size.name) + "\n";
}

/// Takes the text before the next `end`, and that; the rest when there is none.
std::string_view takeUntil(char end, std::string_view& text) {
  const std::string_view taken = text.substr(0, text.find(end));
  text.remove_prefix(std::min(taken.size() + 1, text.size()));
  return taken;
}

bool isNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string percentDecoded(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    unsigned char byte = static_cast<unsigned char>(text.front());
    const char* const digits = text.data() + 1;
    const bool isEncoded =
        byte == '%' && text.size() > 2 && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    bytes += static_cast<char>(byte);
    text.remove_prefix(isEncoded ? 3 : 1);
  }
  return bytes;
}

/// The name of the folder that a line is about; none when it is no such line.
std::optional<std::string> nameIn(std::string_view line) {
  const bool hasSize = isNumber(takeUntil(' ', line));
  const bool hasTime = isNumber(takeUntil(' ', line));
  if (!hasSize || !hasTime) return std::nullopt;
  std::string name = percentDecoded(line);
  constexpr std::string_view kInNoName("/\0", 2);
  if (name.empty() || name.find_first_of(kInNoName) != std::string::npos) return std::nullopt;
  return name;
}

/// Empty when there is no such file, or none of a sensible length.
std::string contentOf(const TrashFolder& trash) {
  constexpr std::size_t kLongest = 16 << 20;
  const UniqueDescriptor file(openat(trash.folder.get(), kFileName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  std::string content;
  char buffer[16 * 1024];
  while (content.size() <= kLongest) {
    const ssize_t length = ::read(file.get(), buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) return length == 0 ? content : "";
    content.append(buffer, static_cast<std::size_t>(length));
  }
  return "";
}

/// By a rename, so that whoever reads it meanwhile, or writes it too, has a whole file.
void replaceContent(const TrashFolder& trash, std::string_view content) {
  const int folder = trash.folder.get();
  const std::string temporary = kFileName + ("." + std::to_string(gettid()));
  unlinkat(folder, temporary.c_str(), 0);  // of a process that was killed
  const UniqueDescriptor file(openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file) return;
  const bool isWritten = !writeToDisk(file.get(), content);
  if (!isWritten || renameat(folder, temporary.c_str(), folder, kFileName) != 0) {
    unlinkat(folder, temporary.c_str(), 0);
  }
}

}  // namespace

std::string directorySizesWith(std::string_view text, const DirectorySize& added,
                               const std::function<bool(const std::string& name)>& isThere) {
  std::string lines;
  while (!text.empty()) {
    const std::string_view line = takeUntil('\n', text);
    const auto name = nameIn(line);
    if (name && *name != added.name && isThere(*name)) lines.append(line).append("\n");
  }
  return lines + lineOf(added);
}

void noteDirectorySize(const TrashFolder& trash, const std::string& name, std::int64_t bytes) {
  struct stat record{};
  if (fstatat(trash.info.get(), recordName(name).c_str(), &record, AT_SYMLINK_NOFOLLOW) != 0) return;
  const auto isThere = [&trash](const std::string& other) {
    struct stat folder{};
    return fstatat(trash.files.get(), other.c_str(), &folder, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(folder.st_mode);
  };
  replaceContent(trash, directorySizesWith(contentOf(trash), {bytes, record.st_mtime, name}, isThere));
}

}  // namespace dunmere
