// QtUrlOpener: opens URLs with the desktop's default application.
#pragma once

#include "platform/desktop/url_opener.h"

namespace dunmere {

/// Needs a QGuiApplication. The scheme "x-apple.systempreferences" belongs to another system: such a URL is declined
/// and nothing is started, not even a search for an application.
class QtUrlOpener : public UrlOpener {
 public:
  bool open(const std::string& url) override;
};

}  // namespace dunmere
