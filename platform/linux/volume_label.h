// labelOfDevice: the name that its owner gave a file system.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dunmere {

/// The label of the file system on `device`, a path under /dev: from the links that the device manager makes in
/// `byLabelFolder`, else, where this process may read it, from the device. Raw bytes; none for anything without a
/// label. May wait for the device. Any thread.
std::optional<std::string> labelOfDevice(const std::string& device,
                                         const std::string& byLabelFolder = "/dev/disk/by-label");

/// Undoes the "\x20" escapes of the device manager's link names.
std::string decodedLabel(std::string_view linkName);

}  // namespace dunmere
