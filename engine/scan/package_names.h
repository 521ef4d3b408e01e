// Packages: folders that stand for one document, known by their extension.
#pragma once

#include <string_view>

namespace dunmere {

/// Whether a folder of this name is a package: a non-empty stem and one of the known extensions, ASCII
/// case-insensitive. For folders only: files and links are never packages.
bool isPackageName(std::string_view name);

}  // namespace dunmere
