// shownText: the raw bytes of a name as a text for the screen.
#pragma once

#include <QString>
#include <string_view>

#include "sweeper/display_text.h"

namespace dunmere {

/// Always plain text: no view may take it for markup. Any thread.
inline QString shownText(std::string_view name) {
  return QString::fromStdString(displayText(name));
}

}  // namespace dunmere
