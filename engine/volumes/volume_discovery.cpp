#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/ascii.h"
#include "engine/disk_sweeper_scan.h"

namespace dunmere {
namespace {

constexpr std::string_view kSystemVolumesPrefix = "/System/Volumes/";
constexpr std::string_view kSwapPath = "/private/var/vm";
constexpr std::string_view kSimulatorPathPart = "/Library/Developer/CoreSimulator";
constexpr std::string_view kSimulatorNamePart = "simulator";
constexpr std::string_view kBootVolumeName = "Macintosh HD";
constexpr std::array<std::string_view, 8> kSystemVolumeNames = {"preboot", "vm",         "update",   "hardware",
                                                                "xart",    "iscpreboot", "recovery", "mnt_preview"};

// White space and line ends, as UTF-8: those of ASCII, next line, the Unicode space separators, line and paragraph
// separator. A label may hold any of them.
constexpr std::array<std::string_view, 25> kSpaces = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00a0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200a", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};

std::string_view trimmed(std::string_view text) {
  for (bool isTrimmed = false; !isTrimmed;) {
    const std::size_t length = text.size();
    for (const std::string_view space : kSpaces) {
      if (text.starts_with(space)) text.remove_prefix(space.size());
      if (text.ends_with(space)) text.remove_suffix(space.size());
    }
    isTrimmed = text.size() == length;
  }
  return text;
}

bool isSystemPath(std::string_view path) {
  return path.starts_with(kSystemVolumesPrefix) || path == kSwapPath;
}

bool isSimulatorPath(std::string_view path) {
  return path.contains(kSimulatorPathPart);
}

/// Decided by the path alone, so that such a volume is never measured.
bool isExcludedByPath(const FileUrl& url) {
  const std::string path = url.path();
  return isSystemPath(path) || isSimulatorPath(path) ||
         asciiLowerCased(url.lastPathComponent()).contains(kSimulatorNamePart);
}

bool shouldIncludeUserFacingVolume(const FileUrl& url, std::string_view name, const VolumeValues& values) {
  if (!values.isBrowsable.value_or(true)) return false;
  // volumeCandidates() has left these out already, but this rule must not depend on it.
  if (isSystemPath(url.path())) return false;
  if (isSimulatorPath(url.path())) return false;
  const std::string plainName = asciiLowerCased(std::string(trimmed(name)));
  if (std::ranges::find(kSystemVolumeNames, plainName) != kSystemVolumeNames.end()) return false;
  return !plainName.contains(kSimulatorNamePart);
}

std::string displayName(const FileUrl& url, const VolumeValues& values) {
  const std::string name = values.name.value_or(std::string());
  return name.empty() ? url.lastPathComponent() : name;
}

/// As reported; that of the root volume comes from the home folder when it reports no total of its own.
std::optional<VolumeSnapshot> capacityOf(const FileUrl& url, const VolumeValues& values, FileSystem& fileSystem) {
  const std::int64_t total = values.totalBytes.value_or(0);
  // Plain available bytes on purpose: those that the system would clear count in the boot snapshot only.
  if (total >= 1) return VolumeSnapshot{total, std::min(total, values.availableBytes.value_or(0))};
  if (url.path() != "/") return std::nullopt;
  return StorageScanner::bootVolumeSnapshot(fileSystem);
}

}  // namespace

std::optional<VolumeSnapshot> StorageScanner::bootVolumeSnapshot(FileSystem& fileSystem) {
  const auto values = fileSystem.volumeValues(fileSystem.homeFolder());
  if (!values) return std::nullopt;
  const std::int64_t total = values->totalBytes.value_or(0);
  if (total < 1) return std::nullopt;
  const std::int64_t free = values->availableForImportantUsageBytes.value_or(values->availableBytes.value_or(0));
  return VolumeSnapshot{total, std::min(total, free)};
}

std::vector<SweeperVolume> DiskSweeperScan::fallbackVolumes(FileSystem& fileSystem) {
  const auto snapshot = StorageScanner::bootVolumeSnapshot(fileSystem);
  if (!snapshot) return {};
  const auto values = fileSystem.volumeValues(fileSystem.homeFolder());
  std::string name(kBootVolumeName);
  if (values && values->name) name = *values->name;  // an empty name stays as it is
  return {{FileUrl("/"), std::move(name), snapshot->totalBytes, snapshot->freeBytes}};
}

std::optional<std::vector<VolumeMount>> DiskSweeperScan::volumeCandidates(FileSystem& fileSystem) {
  auto volumes = fileSystem.mountedVolumes();
  if (volumes) std::erase_if(*volumes, [](const VolumeMount& volume) { return isExcludedByPath(volume.url); });
  return volumes;
}

std::optional<SweeperVolume> DiskSweeperScan::measureVolume(FileSystem& fileSystem, const VolumeMount& candidate) {
  const FileUrl& url = candidate.url;
  const auto values = fileSystem.volumeValues(candidate);
  if (!values) return std::nullopt;
  std::string name = displayName(url, *values);
  if (!shouldIncludeUserFacingVolume(url, name, *values)) return std::nullopt;
  const auto capacity = capacityOf(url, *values, fileSystem);
  if (!capacity) return std::nullopt;
  if (name.empty() || name == "/") name = kBootVolumeName;
  return SweeperVolume{url, std::move(name), capacity->totalBytes, capacity->freeBytes};
}

void DiskSweeperScan::arrangeVolumes(FileSystem& fileSystem, std::vector<SweeperVolume>& volumes) {
  std::map<std::string, int> volumesOfName;
  for (const SweeperVolume& volume : volumes) ++volumesOfName[volume.name];
  for (SweeperVolume& volume : volumes) {
    if (volumesOfName[volume.name] > 1) volume.name += " (" + volume.url.path() + ")";
  }
  std::ranges::stable_sort(volumes, {},
                           [&fileSystem](const SweeperVolume& v) { return fileSystem.nameSortKey(v.name); });
}

std::vector<SweeperVolume> DiskSweeperScan::listVolumes(FileSystem& fileSystem) {
  const auto candidates = volumeCandidates(fileSystem);
  if (!candidates) return fallbackVolumes(fileSystem);
  std::vector<SweeperVolume> volumes;
  constexpr std::size_t kUsualVolumes = 8;
  volumes.reserve(std::min(candidates->size(), kUsualVolumes));
  for (const VolumeMount& candidate : *candidates) {
    if (auto volume = measureVolume(fileSystem, candidate)) volumes.push_back(std::move(*volume));
  }
  if (volumes.empty()) return fallbackVolumes(fileSystem);
  arrangeVolumes(fileSystem, volumes);
  return volumes;
}

}  // namespace dunmere
