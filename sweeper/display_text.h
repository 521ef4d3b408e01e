// displayText: the raw bytes of a name or path made safe to show.
#pragma once

#include <string>
#include <string_view>

namespace dunmere {

/// Valid UTF-8 for the screen, by itself or within a sentence, always as plain text. A name cannot disguise itself:
/// each invalid byte becomes U+FFFD; control characters, bidirectional controls and other characters that show nothing
/// become their code in brackets, which every font can show; a space that is not the space bar's becomes U+2423. Nor
/// can it change places with what stands around it: a name with right-to-left letters comes in an isolate (U+2066 to
/// U+2069). Any other name is unchanged. Any thread.
std::string displayText(std::string_view name);

/// The same for a path, component by component. Any thread.
std::string displayPath(std::string_view path);

}  // namespace dunmere
