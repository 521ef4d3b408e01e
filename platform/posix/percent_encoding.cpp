#include "platform/posix/percent_encoding.h"

namespace dunmere {

namespace {

/// By ASCII value, never by the locale.
bool standsForItself(char byte) {
  const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  const bool digit = byte >= '0' && byte <= '9';
  return letter || digit || std::string_view("/-._~").find(byte) != std::string_view::npos;
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

}  // namespace dunmere
