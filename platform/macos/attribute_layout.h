// The numbers of getattrlist(2) that this program asks for and meets in the answers.
#pragma once

#include <cstddef>
#include <cstdint>

/// They stand here, and not only in the system's headers, so that answers can be read and tested on any system. Where
/// the headers are at hand, attribute_request.cpp compares the two. Source: getattrlist(2), getattrlistbulk(2).
namespace dunmere::attribute_layout {

// Bits of the common attributes, in the order in which their values are packed; but the first two values are
// kReturned and kError.
constexpr std::uint32_t kName = 0x0000'0001;        ///< a reference to a text
constexpr std::uint32_t kObjectType = 0x0000'0008;  ///< 4 bytes
constexpr std::uint32_t kFinderInfo = 0x0000'4000;  ///< 32 bytes
constexpr std::uint32_t kFullPath = 0x0800'0000;    ///< a reference to a text
constexpr std::uint32_t kError = 0x2000'0000;       ///< 4 bytes: the errno value for which the rest is missing
constexpr std::uint32_t kReturned = 0x8000'0000;    ///< a ReturnedSet

// Bits of the file attributes; their values follow the common ones.
constexpr std::uint32_t kAllocatedSize = 0x0000'0004;  ///< 8 bytes: disk space of all forks
constexpr std::uint32_t kDataLength = 0x0000'0200;     ///< 8 bytes: length of the data fork

// Bits of the volume attributes.
constexpr std::uint32_t kVolumeName = 0x0000'2000;  ///< a reference to a text
constexpr std::uint32_t kVolumeInfo = 0x8000'0000;  ///< has no value, but must be asked for with any other

/// Which attributes a record holds.
struct ReturnedSet {
  std::uint32_t common = 0;
  std::uint32_t volume = 0;
  std::uint32_t directory = 0;
  std::uint32_t file = 0;
  std::uint32_t fork = 0;
};
static_assert(sizeof(ReturnedSet) == 20);

/// Where a text of variable length lies.
struct TextReference {
  std::int32_t offset = 0;   ///< from the first byte of this reference
  std::uint32_t length = 0;  ///< with the zero byte that ends the text
};
static_assert(sizeof(TextReference) == 8);

// Values of kObjectType.
constexpr std::uint32_t kRegularFile = 1;
constexpr std::uint32_t kFolder = 2;
constexpr std::uint32_t kSymbolicLink = 5;

// A folder's kFinderInfo: two bytes of flags, the higher one first, whatever the processor.
constexpr std::size_t kFinderInfoBytes = 32;
constexpr std::size_t kFinderFlagsOffset = 8;
constexpr unsigned kHasBundleInHighByte = 0x20;  ///< the Finder shows this folder as one document

}  // namespace dunmere::attribute_layout
