#include "platform/linux/volume_label.h"

#include <blkid.h>
#include <sys/stat.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace dunmere {
namespace {

std::optional<dev_t> deviceNumber(const std::string& path) {
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0 || !S_ISBLK(status.st_mode)) return std::nullopt;
  return status.st_rdev;
}

std::optional<std::string> labelFromLinks(dev_t device, const std::string& folder) {
  std::error_code error;  // a system without a device manager has no such folder
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (deviceNumber(entry->path().native()) == device) return decodedLabel(entry->path().filename().native());
  }
  return std::nullopt;
}

std::optional<std::string> labelOnDevice(const std::string& device) {
  using Probe = std::unique_ptr<blkid_struct_probe, decltype(&blkid_free_probe)>;
  const Probe probe(blkid_new_probe_from_filename(device.c_str()), &blkid_free_probe);
  if (!probe || blkid_do_safeprobe(probe.get()) != 0) return std::nullopt;
  const char* label = nullptr;
  if (blkid_probe_lookup_value(probe.get(), "LABEL", &label, nullptr) != 0) return std::nullopt;
  return label;
}

}  // namespace

std::string decodedLabel(std::string_view linkName) {
  std::string label;
  while (!linkName.empty()) {
    unsigned char byte = 0;
    const char* digits = linkName.data() + 2;
    const bool isEscape = linkName.size() >= 4 && linkName.starts_with("\\x") &&
                          std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    label += isEscape ? static_cast<char>(byte) : linkName.front();
    linkName.remove_prefix(isEscape ? 4 : 1);
  }
  return label;
}

std::optional<std::string> labelOfDevice(const std::string& device, const std::string& byLabelFolder) {
  if (!device.starts_with("/dev/")) return std::nullopt;
  const auto number = deviceNumber(device);
  if (!number) return std::nullopt;
  auto label = labelFromLinks(*number, byLabelFolder);
  if (!label) label = labelOnDevice(device);
  return label && !label->empty() ? label : std::nullopt;
}

}  // namespace dunmere
