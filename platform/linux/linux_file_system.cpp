#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>

#include "platform/icu/icu_name_order.h"
#include "platform/linux/linux_open_folder.h"
#include "platform/linux/mount_choice.h"
#include "platform/linux/mount_table.h"
#include "platform/linux/volume_label.h"
#include "platform/platform_file_system.h"
#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"

namespace dunmere {
namespace {

/// Stands for the root folder where the table does not list its mount, as in a changed root.
MountEntry unlistedRoot() {
  MountEntry root;
  root.mountPoint = "/";
  root.root = "/";
  return root;
}

/// Named as a volume without a label is.
VolumeMount volumeAt(const MountEntry& mount) {
  const FileUrl url(mount.mountPoint);
  return {.url = url, .name = url.path() == "/" ? "Filesystem root" : url.lastPathComponent(), .source = mount.source};
}

/// Asks the file system at `path`, which lies on `volume`.
std::expected<VolumeValues, SweepError> measure(const std::string& path, const VolumeMount& volume, bool isOffered) {
  struct statvfs space{};
  if (::statvfs(path.c_str(), &space) != 0) return openFailure(FileUrl(path), errno);
  return VolumeValues{.name = labelOfDevice(volume.source).value_or(volume.name),
                      .totalBytes = bytesOf(space.f_blocks, space.f_frsize),
                      .availableBytes = bytesOf(space.f_bavail, space.f_frsize),
                      .availableForImportantUsageBytes = std::nullopt,
                      .isBrowsable = isOffered};
}

constexpr int kCallingThread = 0;  // Linux has both priorities for each thread

void lowerProcessorPriority() {
  constexpr int kNice = 10;
  errno = 0;
  const int current = ::getpriority(PRIO_PROCESS, kCallingThread);
  if (errno == 0 && current < kNice) ::setpriority(PRIO_PROCESS, kCallingThread, kNice);
}

/// To the lowest of the best-effort class, in which the thread still moves on a busy disk.
void lowerDiskPriority() {
  // The kernel's numbers, from ioprio_set(2): some versions of <linux/ioprio.h> do not compile as C++.
  constexpr int kWhoProcess = 1;
  constexpr long kClassBestEffort = 2;
  constexpr long kClassIdle = 3;
  constexpr int kClassShift = 13;
  constexpr long kLowest = 7;
  const long current = ::syscall(SYS_ioprio_get, kWhoProcess, kCallingThread);
  if (current >= 0 && current >> kClassShift == kClassIdle) return;
  ::syscall(SYS_ioprio_set, kWhoProcess, kCallingThread, kClassBestEffort << kClassShift | kLowest);
}

/// Folders by getdents64 and statx, volumes by the mount table, names by ICU. Linux marks no folder as a package, so
/// EntryAttributes::isPackage is never set.
class LinuxFileSystem final : public FileSystem {
 public:
  /// Besides what the contract says: the folder stays open until it is destroyed, and at most
  /// FolderDescriptors::budgetOfProcess() of the folders below it.
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override {
    const bool isWalk = detail == EntryDetail::sizes;
    return LinuxOpenFolder::open(descriptors_, url, detail,
                                 isWalk ? std::make_shared<const AutomountNames>(automountNames()) : nullptr);
  }

  /// Mounts that are no volumes to people are left out already.
  std::optional<std::vector<VolumeMount>> mountedVolumes() override {
    const auto mounts = readMountTable();
    if (!mounts) return std::nullopt;
    std::vector<VolumeMount> volumes;
    if (mountHolding(*mounts, "/") == nullptr) volumes.push_back(volumeAt(unlistedRoot()));
    for (const MountEntry& mount : *mounts) {
      if (isOfferedMount(mount)) volumes.push_back(volumeAt(mount));
    }
    return volumes;
  }

  std::expected<VolumeValues, SweepError> volumeValues(const VolumeMount& volume) override {
    return measure(volume.url.path(), volume, true);
  }

  /// Of a mount point that is not offered it tells only that, and does not ask its file system.
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override {
    const auto mounts = readMountTable();
    if (!mounts) return openFailure(url, mounts.error());
    const std::string path = url.key();
    const MountEntry* const listed = mountHolding(*mounts, path);
    const MountEntry mount = listed == nullptr ? unlistedRoot() : *listed;
    const bool isOffered = isOfferedMount(mount);
    if (!isOffered && mount.mountPoint == path) {
      VolumeValues values;
      values.isBrowsable = false;
      return values;
    }
    return measure(path, volumeAt(mount), isOffered);
  }

  FileUrl homeFolder() override { return currentHomeFolder(); }

  Instant now() override {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);  // cannot fail for a clock that every kernel has
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }

  std::string nameSortKey(std::string_view name) override { return nameOrder_.sortKey(name); }

  /// To nice 10 and the lowest disk priority but idle; never raises either.
  void enterUtilityPriority() noexcept override {
    lowerProcessorPriority();
    lowerDiskPriority();
  }

 private:
  FolderDescriptors descriptors_{FolderDescriptors::budgetOfProcess()};
  const IcuNameOrder nameOrder_{IcuNameOrder::userLocale()};
};

}  // namespace

std::unique_ptr<FileSystem> makePlatformFileSystem() {
  return std::make_unique<LinuxFileSystem>();
}

}  // namespace dunmere
