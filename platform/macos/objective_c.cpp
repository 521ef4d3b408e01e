#include "platform/macos/objective_c.h"

namespace dunmere::objective_c {

id stringOf(const std::string& text) {
  return send(classNamed("NSString"), "stringWithUTF8String:", text.c_str());
}

std::string textOf(id string) {
  const auto* const utf8 = send<const char*>(string, "UTF8String");
  return utf8 == nullptr ? "" : utf8;
}

id fileUrlOf(const std::string& path) {
  // Never a folder's URL: its trailing slash would lead through a link.
  return send(classNamed("NSURL"), "fileURLWithFileSystemRepresentation:isDirectory:relativeToURL:", path.c_str(),
              static_cast<BOOL>(false), static_cast<id>(nullptr));
}

}  // namespace dunmere::objective_c
