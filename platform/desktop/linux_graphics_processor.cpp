#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "platform/desktop/graphics_processor.h"

namespace dunmere {

namespace {

namespace fs = std::filesystem;

bool isRenderNode(const fs::directory_entry& entry) {
  return entry.path().filename().native().starts_with("renderD");
}

}  // namespace

bool hasGraphicsProcessor(const std::string& devices) {
  std::error_code ignored;  // what cannot be looked at is of no use to this program either
  const fs::directory_iterator nodes(fs::path(devices) / "dri", ignored);
  if (std::ranges::any_of(nodes, isRenderNode)) return true;
  // NVIDIA's driver and that of Windows' own virtual machines offer theirs elsewhere.
  constexpr std::array kOthers = {"nvidiactl", "dxg"};
  return std::ranges::any_of(kOthers, [&](const char* name) { return fs::exists(fs::path(devices) / name, ignored); });
}

}  // namespace dunmere
