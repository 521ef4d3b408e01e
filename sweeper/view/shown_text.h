// shownText: raw bytes of a name, path or sentence as a text for the screen.
#pragma once

#include <QString>
#include <string_view>

#include "sweeper/display_text.h"

namespace dunmere {

/// Always plain text: no view may take it for markup. A text that begins with right-to-left letters gets a mark in
/// front that keeps the whole of it running from left to right, so that a name cannot change places with what follows
/// it. Main thread.
inline QString shownText(std::string_view bytes) {
  constexpr QChar kLeftToRightMark(u'\u200e');
  QString text = QString::fromStdString(displayText(bytes));
  if (text.isRightToLeft()) text.prepend(kLeftToRightMark);
  return text;
}

}  // namespace dunmere
