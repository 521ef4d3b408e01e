#include "platform/posix/paths.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>

namespace dunmere {
namespace {

/// By ASCII value, never by the locale.
bool standsForItself(char byte) {
  const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  const bool digit = byte >= '0' && byte <= '9';
  return letter || digit || std::string_view("/-._~").contains(byte);
}

}  // namespace

std::string percentEncoded(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char byte : bytes) {
    if (standsForItself(byte)) {
      encoded += byte;
      continue;
    }
    const auto value = static_cast<unsigned char>(byte);
    encoded += '%';
    encoded += kDigits[value >> 4];
    encoded += kDigits[value & 0xF];
  }
  return encoded;
}

std::string fileUri(std::string_view path) {
  return "file://" + percentEncoded(path);
}

FileUrl currentHomeFolder() {
  constexpr std::size_t kFirstSize = 4096;
  constexpr std::size_t kLargestSize = 1 << 20;  // entries of directory services can be long, but not that long
  for (std::vector<char> text(kFirstSize); text.size() <= kLargestSize; text.resize(text.size() * 2)) {
    passwd record{};
    passwd* found = nullptr;
    const int error = ::getpwuid_r(::getuid(), &record, text.data(), text.size(), &found);
    if (error == ERANGE) continue;
    if (error != 0 || found == nullptr) break;
    const std::string home = found->pw_dir == nullptr ? "" : found->pw_dir;
    return home.starts_with('/') ? FileUrl(home) : FileUrl("/");
  }
  return FileUrl("/");
}

}  // namespace dunmere
