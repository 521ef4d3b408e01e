// PrintTo for the engine's values: failed expectations show fields instead of bytes.
#pragma once

#include <gtest/gtest.h>

#include <ostream>

#include "engine/file_url.h"
#include "engine/sweep_error.h"
#include "engine/sweeper_values.h"

namespace dunmere {

inline void PrintTo(const FileUrl& url, std::ostream* out) {
  *out << testing::PrintToString(url.bytes());
}

inline void PrintTo(const SweeperItem& item, std::ostream* out) {
  *out << testing::PrintToString(item.url) << " named " << testing::PrintToString(item.name) << ", " << item.sizeBytes
       << (item.sizeIsPartialMinimum ? "+" : "") << " bytes" << (item.isDirectory ? ", folder" : "")
       << (item.isSymbolicLink ? ", link" : "");
}

inline void PrintTo(const SweeperVolume& volume, std::ostream* out) {
  *out << testing::PrintToString(volume.url) << " named " << testing::PrintToString(volume.name) << ", "
       << volume.freeBytes << " of " << volume.totalBytes << " bytes free";
}

inline void PrintTo(const SweepError& error, std::ostream* out) {
  *out << error.code.message() << " at " << testing::PrintToString(error.path) << ", attempt "
       << static_cast<int>(error.attempt) << ", volume " << testing::PrintToString(error.volumeName);
}

}  // namespace dunmere
