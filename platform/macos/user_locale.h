// collationLocale: the locale by whose rules the user wants texts sorted.
#pragma once

#include <string>

namespace dunmere {

/// As the system's settings name it ("sv-SE"); "C" when they name none. The environment has no say: programs that are
/// started from the desktop have no locale there. Any thread.
std::string collationLocale();

}  // namespace dunmere
