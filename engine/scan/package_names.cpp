#include "engine/scan/package_names.h"

#include <algorithm>
#include <array>

namespace dunmere {

namespace {

// The document types of desktop systems that are stored as folders. Left out on purpose are extensions that ordinary
// folders use as well (download, numbers, pages, service …), because a package counts no bytes. Sorted for the search.
constexpr std::array<std::string_view, 33> kPackageExtensions = {"aplibrary",
                                                                 "app",
                                                                 "appex",
                                                                 "band",
                                                                 "bundle",
                                                                 "docset",
                                                                 "dsym",
                                                                 "fcpbundle",
                                                                 "imovielibrary",
                                                                 "kext",
                                                                 "logicx",
                                                                 "mdimporter",
                                                                 "migratedphotolibrary",
                                                                 "musiclibrary",
                                                                 "photolibrary",
                                                                 "photoslibrary",
                                                                 "playground",
                                                                 "plugin",
                                                                 "prefpane",
                                                                 "pvm",
                                                                 "qlgenerator",
                                                                 "rtfd",
                                                                 "saver",
                                                                 "scptd",
                                                                 "sparsebundle",
                                                                 "tvlibrary",
                                                                 "vmwarevm",
                                                                 "wdgt",
                                                                 "xcarchive",
                                                                 "xcodeproj",
                                                                 "xctest",
                                                                 "xcworkspace",
                                                                 "xpc"};
static_assert(std::ranges::is_sorted(kPackageExtensions));

constexpr std::size_t kLongestExtension = std::ranges::max(kPackageExtensions, {}, &std::string_view::size).size();

constexpr char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool isPackageName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return false;
  const std::string_view extension = name.substr(dot + 1);
  if (extension.size() > kLongestExtension) return false;
  std::array<char, kLongestExtension> lower{};
  std::ranges::transform(extension, lower.begin(), asciiLower);
  return std::ranges::binary_search(kPackageExtensions, std::string_view(lower.data(), extension.size()));
}

}  // namespace dunmere
