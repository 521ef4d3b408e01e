// displayText: raw bytes of a name or path made safe to show.
#pragma once

#include <string>
#include <string_view>

namespace dunmere {

/// Valid UTF-8 for the screen: each invalid byte becomes U+FFFD; control characters become visible pictures (U+2400
/// block, U+2424 for a newline); bidirectional controls and other invisible format characters become their code in
/// brackets, so that a name cannot disguise itself. Anything else is unchanged. Any thread.
std::string displayText(std::string_view bytes);

}  // namespace dunmere
