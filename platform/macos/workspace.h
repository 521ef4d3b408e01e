// The user's desktop on macOS: opening URLs, showing items in the Finder.
#pragma once

#include <string>

namespace dunmere {

/// Opens `url`, percent-encoded ASCII, with whatever application is responsible for it. False when it is no URL or
/// nothing opens it. Main thread.
bool openUrl(const std::string& url);

/// Shows exactly the item at `path`, selected, in the Finder; a failure shows nothing. Returns at once. Main thread.
void revealItem(const std::string& path);

}  // namespace dunmere
