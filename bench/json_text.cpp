#include "bench/json_text.h"

#include <array>
#include <cstdio>

namespace dunmere {
namespace {

std::string hexEscape(const char* format, unsigned char byte) {
  std::array<char, 8> buffer{};
  std::snprintf(buffer.data(), buffer.size(), format, byte);
  return buffer.data();
}

bool isContinuation(std::string_view bytes, std::size_t at) {
  return at < bytes.size() && (static_cast<unsigned char>(bytes[at]) & 0xC0) == 0x80;
}

/// Length of the well-formed UTF-8 sequence at `at`; 0 when there is none (overlong forms, surrogates and values
/// above U+10FFFF are not well formed).
std::size_t sequenceLength(std::string_view bytes, std::size_t at) {
  const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(bytes[at + offset]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xC2 && first <= 0xDF   ? 2
                             : (first & 0xF0) == 0xE0         ? 3
                             : first >= 0xF0 && first <= 0xF4 ? 4
                                                              : 0;
  for (std::size_t offset = 1; offset < length; ++offset) {
    if (!isContinuation(bytes, at + offset)) return 0;
  }
  if (first == 0xE0 && byte(1) < 0xA0) return 0;
  if (first == 0xED && byte(1) > 0x9F) return 0;
  if (first == 0xF0 && byte(1) < 0x90) return 0;
  if (first == 0xF4 && byte(1) > 0x8F) return 0;
  return length;
}

}  // namespace

JsonText& JsonText::key(std::string_view name) {
  separate();
  appendQuoted(name);
  out_ += ':';
  needsComma_ = false;
  return *this;
}

JsonText& JsonText::text(std::string_view bytes) {
  separate();
  appendQuoted(bytes);
  return *this;
}

JsonText& JsonText::integer(std::int64_t value) {
  separate();
  out_ += std::to_string(value);
  return *this;
}

JsonText& JsonText::seconds(double value) {
  separate();
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.6f", value);
  out_ += buffer.data();
  return *this;
}

JsonText& JsonText::boolean(bool value) {
  separate();
  out_ += value ? "true" : "false";
  return *this;
}

JsonText& JsonText::open(char bracket) {
  separate();
  out_ += bracket;
  needsComma_ = false;
  return *this;
}

JsonText& JsonText::close(char bracket) {
  out_ += bracket;
  needsComma_ = true;
  return *this;
}

void JsonText::separate() {
  if (needsComma_) out_ += ',';
  needsComma_ = true;
}

void JsonText::appendQuoted(std::string_view bytes) {
  out_ += '"';
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t length = sequenceLength(bytes, at);
    const auto first = static_cast<unsigned char>(bytes[at]);
    if (length == 0) {
      out_ += hexEscape("\\\\x%02x", first);
    } else if (first == '"' || first == '\\') {
      out_ += '\\';
      out_ += bytes[at];
    } else if (first < 0x20) {
      out_ += hexEscape("\\u%04x", first);
    } else {
      out_ += bytes.substr(at, length);
    }
    at += length == 0 ? 1 : length;
  }
  out_ += '"';
}

}  // namespace dunmere
