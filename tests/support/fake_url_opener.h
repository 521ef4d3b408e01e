// FakeUrlOpener: opens what the test says and remembers what it was asked.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "platform/desktop/platform_desktop.h"

namespace dunmere::test {

class FakeUrlOpener : public UrlOpener {
 public:
  std::set<std::string> opening;   ///< the URLs that open
  std::vector<std::string> asked;  ///< every URL asked for, in order

  bool open(const std::string& url) override {
    asked.push_back(url);
    return opening.contains(url);
  }
};

}  // namespace dunmere::test
