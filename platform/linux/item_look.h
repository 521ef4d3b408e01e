// lookThrough: what must be known of all that an item holds before it goes to the Trash.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <system_error>

#include "platform/linux/held_item.h"

namespace dunmere {

enum class LookDetail {
  rights,  ///< of folders alone
  space,   ///< also the space, for which every file is asked
};

/// The space of a folder with all that it holds, in bytes, as du counts it: a file of several names once. None for what
/// is no folder or was not measured to its end. Fails with ENOTEMPTY when this user could never empty the Trash of it:
/// it holds, however deep, a folder of which the user may not delete every entry, such as another user's or a read-only
/// snapshot. Folders of the user's own count as changeable, since desktops change their rights when they empty the
/// Trash; so does what cannot be read for another reason than its rights. Follows no links. May take minutes; memory
/// grows with the depth, and up to a bound with the files of several names. Any thread.
std::expected<std::optional<std::int64_t>, std::error_code> lookThrough(const HeldItem& held, LookDetail detail);

}  // namespace dunmere
