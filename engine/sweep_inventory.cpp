#include "engine/sweep_inventory.h"

namespace dunmere {

SweepInventory SweepInventory::emptyFor(const FileUrl& root) {
  SweepInventory inventory;
  inventory.root = root;
  inventory.rootPath = root.key();
  return inventory;
}

}  // namespace dunmere
