#include <pthread/qos.h>
#include <sys/resource.h>

#include <cerrno>
#include <chrono>
#include <ctime>

#include "platform/icu/icu_name_order.h"
#include "platform/macos/attribute_request.h"
#include "platform/macos/macos_open_folder.h"
#include "platform/macos/mounted_volumes.h"
#include "platform/macos/objective_c.h"
#include "platform/platform_file_system.h"
#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"

namespace dunmere {
namespace {

using objective_c::classNamed;
using objective_c::send;

/// The locale by whose rules the user wants texts sorted, as the system's settings name it ("sv-SE"); "C" when they
/// name none. Programs that are started from the desktop have no locale in their environment.
std::string collationLocale() {
  const objective_c::AutoreleasePool pool;
  const id locale = send(classNamed("NSLocale"), "currentLocale");
  const std::string name = objective_c::textOf(send(locale, "collatorIdentifier"));
  return name.empty() ? "C" : name;
}

/// From now on no thread of this process makes the system fetch a file or a folder's entries from the cloud: what would
/// need it fails with EDEADLK. Sizes and moves need none of it. Best effort.
void keepCloudFilesAway() {
  ::setiopolicy_np(IOPOL_TYPE_VFS_MATERIALIZE_DATALESS_FILES, IOPOL_SCOPE_PROCESS,
                   IOPOL_MATERIALIZE_DATALESS_FILES_OFF);
}

/// What is free and what the system would clear for something that the user asks for: a service of the system knows,
/// and no call of the kernel.
std::optional<std::int64_t> spaceForImportantUsage(const std::string& path) {
  const objective_c::AutoreleasePool pool;
  const id key = objective_c::stringOf("NSURLVolumeAvailableCapacityForImportantUsageKey");  // a constant's own name
  const id keys = send(classNamed("NSArray"), "arrayWithObject:", key);
  const id values = send(objective_c::fileUrlOf(path), "resourceValuesForKeys:error:", keys, static_cast<id*>(nullptr));
  const id number = send(values, "objectForKey:", key);
  if (number == nullptr) return std::nullopt;
  return send<long long>(number, "longLongValue");
}

/// Folders that it opened must not outlive it. Making it keeps the whole process from fetching files from the cloud.
class MacosFileSystem final : public FileSystem {
 public:
  MacosFileSystem() { keepCloudFilesAway(); }

  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override {
    return MacosOpenFolder::open(descriptors_, url, detail);
  }

  /// All mounted volumes, those that are not meant for people too.
  std::optional<std::vector<VolumeMount>> mountedVolumes() override {
    const auto mounted = dunmere::mountedVolumes();
    if (!mounted) return std::nullopt;
    std::vector<VolumeMount> volumes;
    for (const MountedVolume& volume : *mounted) {
      const FileUrl url(volume.mountPoint);
      volumes.push_back({.url = url, .name = url.lastPathComponent(), .source = volume.device});
    }
    return volumes;
  }

  using FileSystem::volumeValues;
  /// Of a volume that is hidden from people it tells only that, and does not ask its file system.
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override {
    const auto mounted = dunmere::mountedVolumes();
    if (!mounted) return openFailure(url, mounted.error());
    const std::string path = url.key();
    const MountedVolume* const listed = mountHolding(*mounted, path);
    if (listed == nullptr) return openFailure(url, ENOENT);
    VolumeValues values;
    values.isBrowsable = listed->isBrowsable();
    if (!listed->isBrowsable() && listed->mountPoint == path) return values;

    const auto volume = volumeOf(path);
    if (!volume) return openFailure(url, volume.error());
    values.name = volumeNameAt(volume->mountPoint);
    values.totalBytes = volume->totalBytes();
    values.availableBytes = volume->availableBytes();
    values.availableForImportantUsageBytes = spaceForImportantUsage(path);
    return values;
  }

  FileUrl homeFolder() override { return currentHomeFolder(); }

  Instant now() override {
    // Goes on while the machine sleeps. The approximate reading needs no call of the kernel, and is milliseconds off.
    return std::chrono::nanoseconds(::clock_gettime_nsec_np(CLOCK_MONOTONIC_RAW_APPROX));
  }

  std::string nameSortKey(std::string_view name) override { return nameOrder_.sortKey(name); }

  /// To the quality of service "utility", which the disk's priority follows; never raises it.
  void enterUtilityPriority() noexcept override {
    const qos_class_t current = ::qos_class_self();
    const bool isLower = current != QOS_CLASS_UNSPECIFIED && current <= QOS_CLASS_UTILITY;
    if (!isLower) ::pthread_set_qos_class_self_np(QOS_CLASS_UTILITY, 0);
  }

 private:
  FolderDescriptors descriptors_{FolderDescriptors::budgetOfProcess()};
  const IcuNameOrder nameOrder_{collationLocale()};
};

}  // namespace

std::unique_ptr<FileSystem> makePlatformFileSystem() {
  return std::make_unique<MacosFileSystem>();
}

}  // namespace dunmere
