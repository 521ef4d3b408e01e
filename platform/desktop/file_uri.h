// fileUri: a path's bytes as a file: URI.
#pragma once

#include <string>
#include <string_view>

namespace dunmere {

/// "file://" and the absolute `path`, percent-encoded. Any thread.
std::string fileUri(std::string_view path);

}  // namespace dunmere
