// SystemSettingsLinks: ways into the pages of the system's settings.
#pragma once

#include <span>
#include <string_view>

#include "platform/desktop/platform_desktop.h"

namespace dunmere::SystemSettingsLinks {

/// Opens the page where the user grants Full Disk Access, or the page nearest to it; where there is none, nothing
/// happens. Main thread.
void openFullDiskAccess(UrlOpener& opener);

/// Opens the first of the candidates that opens, in their order. One that is no URL is passed over unasked. False when
/// none opened.
bool openFirst(std::span<const std::string_view> candidates, UrlOpener& opener);

}  // namespace dunmere::SystemSettingsLinks
