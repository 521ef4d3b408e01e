#include "platform/desktop/file_uri.h"

namespace dunmere {

namespace {

/// By ASCII value, never by the locale.
bool standsForItself(char byte) {
  const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  const bool digit = byte >= '0' && byte <= '9';
  return letter || digit || std::string_view("/-._~").find(byte) != std::string_view::npos;
}

}  // namespace

std::string fileUri(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = "file://";
  for (const char byte : path) {
    if (standsForItself(byte)) {
      uri += byte;
      continue;
    }
    const auto value = static_cast<unsigned char>(byte);
    uri += '%';
    uri += kDigits[value >> 4];
    uri += kDigits[value & 0xF];
  }
  return uri;
}

}  // namespace dunmere
