// fileUri: a path's bytes as a file: URI.
#pragma once

#include <string>
#include <string_view>

namespace dunmere {

/// "file://" and the absolute `path` with every byte percent-encoded but '/' and RFC 3986's unreserved characters, so
/// that the exact bytes arrive whatever their encoding. Pure ASCII. Any thread.
std::string fileUri(std::string_view path);

}  // namespace dunmere
