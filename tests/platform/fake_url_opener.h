// FakeUrlOpener: remembers the URLs that it was asked to open.
#pragma once

#include <string>
#include <vector>

#include "platform/desktop/url_opener.h"

namespace dunmere::test {

class FakeUrlOpener : public UrlOpener {
 public:
  std::vector<std::string> opened;
  bool answer = true;  ///< what open() returns

  bool open(const std::string& url) override {
    opened.push_back(url);
    return answer;
  }
};

}  // namespace dunmere::test
