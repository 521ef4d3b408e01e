// ASCII letters, in bytes that may be of any encoding, and extensions, which are made of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace dunmere {

/// Capital ASCII letters made small; every other byte stays.
inline std::string asciiLowerCased(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

/// Whether `name` has a stem and one of these extensions, in small or capital letters. `extensions` are small letters,
/// each extension between two dots.
inline bool hasExtension(std::string_view name, std::string_view extensions) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return false;
  return extensions.contains(asciiLowerCased(std::string(name.substr(dot))) + '.');
}

}  // namespace dunmere
