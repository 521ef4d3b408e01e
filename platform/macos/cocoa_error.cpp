#include "platform/macos/cocoa_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <optional>
#include <string_view>

namespace dunmere {
namespace {

struct Meaning {
  std::int64_t code;
  int error;
};

// Foundation's codes for files. Left out are those that only say that something went wrong: 256 and 512.
constexpr auto kCocoaMeanings = std::to_array<Meaning>({
    {4, ENOENT},          // no such file
    {257, EACCES},        // reading is not permitted
    {258, ENAMETOOLONG},  // the name cannot be read
    {260, ENOENT},        // no such file to read
    {513, EACCES},        // writing is not permitted
    {514, ENAMETOOLONG},  // the name cannot be written
    {516, EEXIST},        // there is such a file already
    {640, ENOSPC},        // no space left
    {642, EROFS},         // the volume is read only
    {3328, ENOTSUP},      // a feature that the volume does not have: a Trash
});

// The file manager's older codes, which underlie some of the above.
constexpr auto kOldMeanings = std::to_array<Meaning>({
    {-34, ENOSPC},    // the disk is full
    {-43, ENOENT},    // no such file
    {-44, EROFS},     // the disk is locked
    {-46, EROFS},     // the volume is locked
    {-47, EBUSY},     // the file is busy
    {-54, EACCES},    // the permissions are against it
    {-120, ENOENT},   // no such folder
    {-5000, EACCES},  // access denied
});

std::optional<int> meaningIn(std::span<const Meaning> meanings, std::int64_t code) {
  const auto meaning = std::ranges::find(meanings, code, &Meaning::code);
  return meaning == meanings.end() ? std::nullopt : std::optional(meaning->error);
}

std::optional<int> meaningOf(const CocoaError& error) {
  if (error.domain == "NSCocoaErrorDomain") return meaningIn(kCocoaMeanings, error.code);
  if (error.domain == "NSOSStatusErrorDomain") return meaningIn(kOldMeanings, error.code);
  if (error.domain != "NSPOSIXErrorDomain") return std::nullopt;
  const bool isErrno = error.code > 0 && error.code <= std::numeric_limits<int>::max();
  return isErrno ? std::optional(static_cast<int>(error.code)) : std::nullopt;
}

}  // namespace

int errnoOf(std::span<const CocoaError> chain) {
  for (const CocoaError& error : chain) {
    if (const auto meaning = meaningOf(error)) return *meaning;
  }
  return EIO;
}

}  // namespace dunmere
