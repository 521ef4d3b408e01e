// Reading whole folders in tests of the real file system.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "engine/file_system.h"

namespace dunmere::test {

/// All entries of `folder` by name, measured unless only their kinds are wanted; fails the test when that fails or a
/// name comes twice.
inline std::map<std::string, EntryAttributes> contentsOf(OpenFolder& folder, EntryDetail detail = EntryDetail::sizes) {
  std::map<std::string, EntryAttributes> contents;
  EntryBatch batch;
  for (;;) {
    const auto read = folder.readEntries(batch);
    EXPECT_TRUE(read.has_value()) << read.error().code.message();
    if (!read || batch.empty()) return contents;
    EXPECT_TRUE(detail == EntryDetail::kinds || folder.measure(batch));
    for (const auto& entry : batch.entries()) {
      const bool isNew = contents.emplace(batch.name(entry), entry.attributes).second;
      EXPECT_TRUE(isNew) << batch.name(entry);
    }
  }
}

/// Opens `url`; throws (and so fails the test) when that fails.
inline std::shared_ptr<OpenFolder> opened(FileSystem& files, const FileUrl& url,
                                          EntryDetail detail = EntryDetail::sizes) {
  return files.openFolder(url, detail).value();
}

/// The error value of a failed operation; 0 for success.
template <typename Value>
int errorOf(const std::expected<Value, SweepError>& result) {
  return result ? 0 : result.error().code.value();
}

}  // namespace dunmere::test
