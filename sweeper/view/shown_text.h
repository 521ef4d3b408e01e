// shownText: raw bytes of a name, path or sentence as a text for the screen.
#pragma once

#include <QString>
#include <string_view>

#include "sweeper/display_text.h"

namespace dunmere {

/// Always plain text: no view may take it for markup. Main thread.
inline QString shownText(std::string_view bytes) {
  return QString::fromStdString(displayText(bytes));
}

}  // namespace dunmere
