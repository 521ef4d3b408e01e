// FileUrl: an absolute file-system path as raw bytes, with the path rules that the whole system shares.
#pragma once

#include <compare>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace dunmere {

/// An absolute path. Holds exactly the bytes it was made from (any bytes but NUL); nothing is decoded,
/// percent-encoded or looked up on disk. All operations are lexical. A plain value, safe to hand between threads.
/// Equality and order compare the bytes as given, so "/a" and "/a/" are different values with one path().
class FileUrl {
 public:
  FileUrl() = default;  ///< the empty path
  explicit FileUrl(std::string bytes) : bytes_(std::move(bytes)) {}

  /// The bytes this value was made from.
  const std::string& bytes() const { return bytes_; }

  /// The path without trailing slashes, except for the root folder, which is "/". Not standardized.
  std::string path() const;

  /// The one text form in which paths are stored and looked up: "." and ".." components, repeated slashes and the
  /// trailing slash removed; ".." never climbs above "/". The root folder is "/". An empty path stays empty.
  std::string key() const;

  /// A FileUrl of key().
  FileUrl standardized() const { return FileUrl(key()); }

  /// The last component without slashes; "/" for the root folder; empty for the empty path.
  std::string lastPathComponent() const;

  /// The parent: "/a/b" gives "/a", "/a" gives "/", "/" stays "/" (the climb ends there).
  FileUrl deletingLastPathComponent() const;

  /// This path, one slash, `component`. `component` holds no slash.
  FileUrl appending(std::string_view component) const;

  friend auto operator<=>(const FileUrl&, const FileUrl&) = default;

 private:
  std::string bytes_;
};

}  // namespace dunmere

template <>
struct std::hash<dunmere::FileUrl> {
  std::size_t operator()(const dunmere::FileUrl& url) const noexcept { return std::hash<std::string>{}(url.bytes()); }
};
