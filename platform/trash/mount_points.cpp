#include "platform/trash/mount_points.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/trash/descriptor.h"

namespace dunmere {

namespace {

constexpr int kMountPointField = 4;  // fifth of a line, proc(5)

std::string_view field(std::string_view line, int index) {
  for (; index > 0; --index) {
    const std::size_t space = line.find(' ');
    if (space == std::string_view::npos) return {};
    line.remove_prefix(space + 1);
  }
  return line.substr(0, line.find(' '));
}

bool isOctalDigit(char digit) {
  return digit >= '0' && digit <= '7';
}

bool isOctalEscape(std::string_view text) {
  return text.size() >= 4 && text[0] == '\\' && isOctalDigit(text[1]) && isOctalDigit(text[2]) && isOctalDigit(text[3]);
}

/// The kernel writes space, tab, newline and backslash as a backslash and three octal digits.
std::string unescaped(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    const bool escape = isOctalEscape(text);
    bytes += escape ? static_cast<char>((text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0')) : text.front();
    text.remove_prefix(escape ? 4 : 1);
  }
  return bytes;
}

/// Whether `path` is `folder` or lies below it.
bool isAtOrBelow(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.starts_with('/');
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

std::expected<std::vector<std::string>, std::error_code> readMountPoints() {
  const auto failure = [] { return std::unexpected(std::error_code(errno, std::generic_category())); };
  const Descriptor file(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return failure();
  std::string text;
  std::array<char, 64 * 1024> chunk;
  for (;;) {
    const ssize_t count = read(file.number(), chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failure();
    if (count == 0) return parseMountPoints(text);
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
}

std::vector<std::string> parseMountPoints(std::string_view mountInfo) {
  std::vector<std::string> mountPoints;
  while (!mountInfo.empty()) {
    const std::size_t end = std::min(mountInfo.find('\n'), mountInfo.size());
    const std::string_view mountPoint = field(mountInfo.substr(0, end), kMountPointField);
    if (!mountPoint.empty()) mountPoints.push_back(unescaped(mountPoint));
    mountInfo.remove_prefix(std::min(end + 1, mountInfo.size()));
  }
  return mountPoints;
}

bool isMountAtOrBelow(const std::vector<std::string>& mountPoints, std::string_view path) {
  for (const std::string& mountPoint : mountPoints) {
    if (isAtOrBelow(mountPoint, path)) return true;
  }
  return false;
}

std::string mountPointHolding(const std::vector<std::string>& mountPoints, std::string_view path) {
  std::string nearest = "/";
  for (const std::string& mountPoint : mountPoints) {
    if (mountPoint.size() > nearest.size() && isAtOrBelow(path, mountPoint)) nearest = mountPoint;
  }
  return nearest;
}

}  // namespace dunmere
