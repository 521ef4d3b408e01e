#include "platform/linux/local_mounts.h"

#include "platform/linux/entry_status.h"

namespace dunmere {

bool LocalMounts::holds(int descriptor) const {
  const auto mount = uniqueMountNumber(descriptor);
  const std::lock_guard lock(mutex_);
  return mount && mounts_.contains(*mount);
}

void LocalMounts::add(int descriptor) {
  const auto mount = uniqueMountNumber(descriptor);
  const std::lock_guard lock(mutex_);
  if (mount) mounts_.insert(*mount);
}

}  // namespace dunmere
