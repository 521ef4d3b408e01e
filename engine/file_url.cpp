#include "engine/file_url.h"

#include <algorithm>

namespace dunmere {
namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

}  // namespace

std::string FileUrl::path() const {
  return std::string(withoutTrailingSlashes(bytes_));
}

std::string FileUrl::key() const {
  if (bytes_.empty()) return {};
  // One pass: each component is appended to the key; ".." cuts the last one off again.
  std::string key;
  key.reserve(bytes_.size());
  const std::string_view bytes = bytes_;
  for (std::size_t start = 0; start < bytes.size();) {
    const std::size_t end = std::min(bytes.find('/', start), bytes.size());
    const std::string_view component = bytes.substr(start, end - start);
    start = end + 1;
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      const std::size_t slash = key.rfind('/');
      key.resize(slash == std::string::npos ? 0 : slash);
      continue;
    }
    key += '/';
    key += component;
  }
  return key.empty() ? "/" : key;
}

std::string FileUrl::lastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(bytes_);
  if (path == "/") return "/";
  return std::string(path.substr(path.rfind('/') + 1));
}

FileUrl FileUrl::deletingLastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(bytes_);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return FileUrl();
  return FileUrl(std::string(withoutTrailingSlashes(path.substr(0, slash + 1))));
}

FileUrl FileUrl::appending(std::string_view component) const {
  std::string bytes;
  bytes.reserve(bytes_.size() + 1 + component.size());
  bytes += bytes_;
  if (!bytes.ends_with('/')) bytes += '/';
  bytes += component;
  return FileUrl(std::move(bytes));
}

}  // namespace dunmere
