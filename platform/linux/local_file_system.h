// liesOnLocalFileSystem: whether what is open may ever keep somebody waiting.
#pragma once

namespace dunmere {

/// Whether `descriptor` leads to a file system of this machine's own, which always answers. May itself wait. Any
/// thread.
bool liesOnLocalFileSystem(int descriptor);

}  // namespace dunmere
