// currentHomeFolder: where the account database puts the current user's home.
#pragma once

#include "engine/file_url.h"

namespace dunmere {

/// The home folder of the process's real user; "/" when the account database names none. The environment is not asked:
/// it may have been kept from another user's session. Any thread.
FileUrl currentHomeFolder();

}  // namespace dunmere
