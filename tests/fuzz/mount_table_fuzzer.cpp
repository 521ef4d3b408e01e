// Any mount table: what is read of it leads somewhere, and is the same when it is read again.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/mount_choice.h"
#include "platform/linux/mount_table.h"
#include "platform/posix/paths.h"
#include "platform/posix/unique_descriptor.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

void checkMounts(const std::vector<MountEntry>& mounts) {
  // Not always all of them: two mounts may have one number, which only makes sense to whoever sees both.
  for (const MountEntry& mount : withoutHiddenMounts(mounts)) {
    require(std::ranges::find(mounts, mount) != mounts.end(), "nothing is added");
  }
  for (const MountEntry& mount : mounts) {
    const MountEntry* holder = mountHolding(mounts, mount.mountPoint);
    require(holder != nullptr && isAtOrBelow(mount.mountPoint, holder->mountPoint), "a mount point lies on a mount");
    require(isMountAtOrBelow(mounts, mount.mountPoint), "a mount point is one");
    if (isOfferedMount(mount)) require(mount.mountPoint == "/" || holdsUserFiles(mount), "a drive holds files");
  }
}

void check(const std::uint8_t* table, std::size_t size) {
  const UniqueDescriptor file(::memfd_create("mountinfo", MFD_CLOEXEC));
  require(file && ::write(file.get(), table, size) == static_cast<ssize_t>(size), "there is memory for the input");
  const std::string path = "/proc/self/fd/" + std::to_string(file.get());
  const auto mounts = readMountTable(path);
  require(mounts == readMountTable(path), "a table reads the same twice");
  if (mounts) {
    checkMounts(*mounts);
  } else {
    require(mounts.error() > 0, "an error has a number");
  }
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dunmere::test::check(data, size);
  return 0;
}
