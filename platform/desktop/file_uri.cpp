#include "platform/desktop/file_uri.h"

#include "platform/posix/percent_encoding.h"

namespace dunmere {

std::string fileUri(std::string_view path) {
  return "file://" + percentEncoded(path);
}

}  // namespace dunmere
