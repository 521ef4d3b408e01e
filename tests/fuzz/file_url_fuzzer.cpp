// Any path, against what splitting it at its slashes gives.
#include <cstddef>
#include <cstdint>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

#include "engine/file_url.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

using Components = std::vector<std::string>;

Components componentsOf(std::string_view path) {
  Components components;
  for (const auto part : path | std::views::split('/')) {
    const std::string component(part.begin(), part.end());
    if (component == "..") {
      if (!components.empty()) components.pop_back();
    } else if (!component.empty() && component != ".") {
      components.push_back(component);
    }
  }
  return components;
}

std::string joined(const Components& components) {
  std::string path;
  for (const std::string& component : components) path += "/" + component;
  return path.empty() ? "/" : path;
}

void checkParents(FileUrl url, Components components) {
  for (; !components.empty(); components.pop_back()) {
    require(url.lastPathComponent() == components.back(), "the last component is the last of the key");
    const FileUrl parent = url.deletingLastPathComponent();
    require(parent.appending(components.back()) == url, "the parent and the last component make the path");
    url = parent;
  }
  require(url.bytes() == "/" && url.deletingLastPathComponent() == url, "the climb ends at the root");
}

void check(const std::string& path) {
  const FileUrl url(path);
  require(url.bytes() == path, "the bytes stay");
  const std::string shown = url.path();
  require(shown == "/" || !shown.ends_with('/'), "a path has no slash at its end");
  require(path.starts_with(shown) && path.find_first_not_of('/', shown.size()) == std::string::npos,
          "a path lacks nothing but slashes at its end");

  const Components components = componentsOf(path);
  require(url.key() == joined(components), "the key is the components joined");
  require(url.standardized().key() == url.key(), "a key is its own key");
  checkParents(url.standardized(), components);
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dunmere::test::check("/" + std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
