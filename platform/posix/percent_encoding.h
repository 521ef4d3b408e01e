// percentEncoded: bytes as plain ASCII, as URIs write them.
#pragma once

#include <string>
#include <string_view>

namespace dunmere {

/// `bytes` with every byte percent-encoded but '/' and RFC 3986's unreserved characters, so that the exact bytes arrive
/// whatever their encoding. Pure ASCII. Any thread.
std::string percentEncoded(std::string_view bytes);

}  // namespace dunmere
