// canBeEmptied: whether its user can ever empty the Trash of an item, for which all of it is looked through.
#pragma once

#include "platform/linux/held_item.h"

namespace dunmere {

/// False when the item holds, however deep, a folder of which this user may not delete all entries: another user's, a
/// read-only snapshot. Folders of the user's own count as changeable, since desktops change their rights when they
/// empty the Trash. What cannot be read for another reason is taken for deletable. Follows no links. Takes long for
/// many folders; memory grows with the depth alone. Any thread.
bool canBeEmptied(const HeldItem& held);

}  // namespace dunmere
