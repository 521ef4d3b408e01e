// systemCode: an errno value as an error code.
#pragma once

#include <system_error>

namespace dunmere {

inline std::error_code systemCode(int number) {
  return {number, std::generic_category()};
}

}  // namespace dunmere
