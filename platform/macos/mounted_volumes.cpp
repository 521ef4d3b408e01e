#include "platform/macos/mounted_volumes.h"

#include <sys/mount.h>
#include <sys/param.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace dunmere {
namespace {

static_assert(MountedVolume::kNotForBrowsing == MNT_DONTBROWSE);

MountedVolume volumeFrom(const struct statfs& status) {
  return {.mountPoint = status.f_mntonname,
          .device = status.f_mntfromname,
          .flags = status.f_flags,
          .blockBytes = status.f_bsize,
          .blocks = status.f_blocks,
          .availableBlocks = status.f_bavail};
}

}  // namespace

std::expected<std::vector<MountedVolume>, int> mountedVolumes() {
  std::vector<struct statfs> list;
  int count = ::getfsstat(nullptr, 0, MNT_NOWAIT);
  do {
    if (count < 0) return std::unexpected(errno);
    // Volumes may be mounted between the count and the list: a list that fills its buffer may not be whole.
    list.resize(static_cast<std::size_t>(count) + 8);
    count = ::getfsstat(list.data(), static_cast<int>(list.size() * sizeof list.front()), MNT_NOWAIT);
  } while (count < 0 || static_cast<std::size_t>(count) == list.size());
  list.resize(static_cast<std::size_t>(count));

  std::vector<MountedVolume> volumes;
  std::ranges::transform(list, std::back_inserter(volumes), volumeFrom);
  return volumes;
}

std::expected<MountedVolume, int> volumeOf(const std::string& path) {
  struct statfs status{};
  if (::statfs(path.c_str(), &status) != 0) return std::unexpected(errno);
  return volumeFrom(status);
}

}  // namespace dunmere
