// The look back after a move to the Trash: whether the item's origin was recorded, and the way back if it was not.
#pragma once

#include <optional>
#include <string>
#include <system_error>

#include "platform/trash/located_item.h"

namespace dunmere {

/// Where a moved item lies in a Trash.
struct TrashedItem {
  std::string path;      ///< <trash>/files/<name>
  std::string infoPath;  ///< <trash>/info/<name>.trashinfo, where the origin is recorded
};

/// Finds `located` after it was moved; none when it does not lie in a Trash (any more).
std::optional<TrashedItem> findInTrash(const LocatedItem& located);

/// Whether the record of the origin was written to its end.
bool isOriginRecorded(const TrashedItem& trashed);

/// Why GIO leaves a record unfinished without a word: ENAMETOOLONG when the temporary name under which it writes the
/// record is too long, else ENOSPC: the volume or a quota is full.
std::error_code unrecordedReason(const TrashedItem& trashed);

/// Moves the item from the Trash to its old place, unless something else is there now, and removes its unfinished
/// record. False when the item had to stay in the Trash.
bool putBack(const TrashedItem& trashed, const LocatedItem& located);

}  // namespace dunmere
