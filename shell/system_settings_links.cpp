#include "shell/system_settings_links.h"

#include <QByteArray>
#include <QUrl>
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

/// Whether it is a whole URL as it may be sent: ASCII, with a scheme.
bool isUrl(std::string_view text) {
  const auto isAscii = [](unsigned char c) { return c < 0x80; };
  const QUrl url = QUrl::fromEncoded(QByteArray(text.data(), static_cast<qsizetype>(text.size())), QUrl::StrictMode);
  return std::ranges::all_of(text, isAscii) && url.isValid() && !url.scheme().isEmpty();
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
