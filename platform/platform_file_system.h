// makePlatformFileSystem: the file system of the system that the program was built for.
#pragma once

#include <memory>

#include "engine/file_system.h"

namespace dunmere {

/// The build picks the implementation. Never null.
std::unique_ptr<FileSystem> makePlatformFileSystem();

}  // namespace dunmere
