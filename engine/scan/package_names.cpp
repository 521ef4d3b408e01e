#include "engine/scan/package_names.h"

#include <algorithm>
#include <string>

#include "engine/ascii.h"

namespace dunmere {

namespace {

// The document types of desktop systems that are stored as folders. Left out on purpose are extensions that ordinary
// folders use as well (download, numbers, pages, service …), because a package counts no bytes. Sorted for the search.
constexpr std::string_view kExtensions[] = {"aplibrary",
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
static_assert(std::ranges::is_sorted(kExtensions));

}  // namespace

bool isPackageName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return false;
  return std::ranges::binary_search(kExtensions, asciiLowerCased(std::string(name.substr(dot + 1))));
}

}  // namespace dunmere
