// UrlOpener: asks the system to open a URL with whatever application is responsible for it.
#pragma once

#include <string>

namespace dunmere {

/// Called on the main thread only.
class UrlOpener {
 public:
  virtual ~UrlOpener() = default;

  /// `url` is percent-encoded ASCII. True when the system took the request, false when `url` is malformed or nothing
  /// here opens it; a refused URL has no effect at all, so that a caller may try another one.
  virtual bool open(const std::string& url) = 0;
};

}  // namespace dunmere
