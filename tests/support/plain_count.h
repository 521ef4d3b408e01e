// PlainCount: what a scan of a real tree must find, counted the plain way, with readdir and lstat.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace dunmere::test {

/// The bytes of every regular file, and in every folder above it. Packages are not entered, links not followed.
struct PlainCount {
  std::map<std::string, std::int64_t> bytes;  ///< by path
  std::vector<std::string> folders;  ///< every folder that could be read, by path; a parent before its children
  std::int64_t fileCount = 0;
  std::int64_t totalBytes = 0;
  bool hadReadErrors = false;  ///< some folder could not be read
};

/// Counts the tree at `root`, which must not change meanwhile; of any depth.
PlainCount plainCount(const std::string& root);

}  // namespace dunmere::test
