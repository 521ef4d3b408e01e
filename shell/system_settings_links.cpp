#include "shell/system_settings_links.h"

#include <algorithm>
#include <array>
#include <string>

namespace dunmere::SystemSettingsLinks {
namespace {

/// The first two name the list itself, under two identifiers of the settings' page; the third names the page around it.
constexpr std::array<std::string_view, 3> fullDiskAccessPages = {
    "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles",
    "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?privacy_AllFiles",
    "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension",
};

// Not std::isalpha and the like: they answer by locale.
bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isHexDigit(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isScheme(std::string_view text) {
  const auto inScheme = [](char c) { return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.'; };
  return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, inScheme);
}

/// Only characters that RFC 3986 lets stand in a URL, and whole percent escapes.
bool isUrlText(std::string_view text) {
  constexpr std::string_view marks = "-._~:/?#[]@!$&'()*+,;=";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '%') {
      if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) return false;
      i += 2;
    } else if (!isLetter(c) && !isDigit(c) && marks.find(c) == std::string_view::npos) {
      return false;
    }
  }
  return true;
}

bool isUrl(std::string_view text) {
  const std::size_t colon = text.find(':');
  return colon != std::string_view::npos && isScheme(text.substr(0, colon)) && isUrlText(text.substr(colon + 1));
}

}  // namespace

bool openFirst(std::span<const std::string_view> candidates, UrlOpener& opener) {
  return std::ranges::any_of(candidates,
                             [&](std::string_view url) { return isUrl(url) && opener.open(std::string(url)); });
}

void openFullDiskAccess(UrlOpener& opener) {
  openFirst(fullDiskAccessPages, opener);
}

}  // namespace dunmere::SystemSettingsLinks
