// ASCII letters, in bytes that may be of any encoding.
#pragma once

#include <algorithm>
#include <string>

namespace dunmere {

/// Capital ASCII letters made small; every other byte stays.
inline std::string asciiLowerCased(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

}  // namespace dunmere
