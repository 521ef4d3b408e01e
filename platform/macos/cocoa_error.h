// errnoOf: the errno value that says what a Cocoa error says.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace dunmere {

/// One NSError: its domain and its code therein.
struct CocoaError {
  std::string domain;
  std::int64_t code = 0;
};

/// `chain`: an error and the errors underlying it, the outermost first. The first of them that says something definite
/// decides; EIO when none does. ENOTSUP stands for an item whose volume has no Trash. Any thread.
int errnoOf(std::span<const CocoaError> chain);

}  // namespace dunmere
