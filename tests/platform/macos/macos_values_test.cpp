// What macOS says of volumes and failures, turned into the engine's terms.
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <string>
#include <vector>

#include "platform/macos/cocoa_error.h"
#include "platform/macos/mounted_volumes.h"

namespace dunmere::test {
namespace {

MountedVolume volumeAt(const std::string& mountPoint, std::uint32_t flags = 0) {
  return {.mountPoint = mountPoint, .device = {}, .flags = flags};
}

TEST(MacosVolumes, FlagDecidesWhetherPeopleBrowse) {
  constexpr std::uint32_t kNotForBrowsing = 0x0010'0000;
  EXPECT_TRUE(volumeAt("/").isBrowsable());
  EXPECT_TRUE(volumeAt("/", ~kNotForBrowsing).isBrowsable());
  EXPECT_FALSE(volumeAt("/System/Volumes/VM", kNotForBrowsing).isBrowsable());
  EXPECT_FALSE(volumeAt("/System/Volumes/VM", 0xffff'ffff).isBrowsable());
}

TEST(MacosVolumes, SpaceIsBlocksTimesBlockSize) {
  MountedVolume volume = volumeAt("/");
  volume.blockBytes = 4096;
  volume.blocks = 120'699'413;
  volume.availableBlocks = 61'202'533;
  EXPECT_EQ(volume.totalBytes(), 494'384'795'648);
  EXPECT_EQ(volume.availableBytes(), 250'685'575'168);
}

TEST(MacosVolumes, AnySpaceThatIsClaimedIsAByteCount) {
  MountedVolume volume = volumeAt("/Volumes/Share");
  EXPECT_EQ(volume.totalBytes(), 0);
  volume.blocks = volume.availableBlocks = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(volume.totalBytes(), 0);
  volume.blockBytes = 1'048'576;
  EXPECT_EQ(volume.totalBytes(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(volume.availableBytes(), std::numeric_limits<std::int64_t>::max());
}

int errnoOfOne(const char* domain, std::int64_t code) {
  const CocoaError error{.domain = domain, .code = code};
  return errnoOf({&error, 1});
}

TEST(MacosErrors, CodesOfFilesHaveTheirErrno) {
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 4), ENOENT);
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 260), ENOENT);
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 257), EACCES);
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 513), EACCES);
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 640), ENOSPC);
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 642), EROFS);
}

TEST(MacosErrors, VolumeWithoutTrashIsNotSupported) {
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 3328), ENOTSUP);
}

TEST(MacosErrors, UnderlyingErrorSpeaksWhereTheOuterOneSaysNothing) {
  const std::vector<CocoaError> unknown = {{"NSCocoaErrorDomain", 512}, {"NSPOSIXErrorDomain", EBUSY}};
  EXPECT_EQ(errnoOf(unknown), EBUSY);
  const std::vector<CocoaError> old = {{"NSCocoaErrorDomain", 512}, {"NSOSStatusErrorDomain", -5000}};
  EXPECT_EQ(errnoOf(old), EACCES);
  const std::vector<CocoaError> definite = {{"NSCocoaErrorDomain", 513}, {"NSPOSIXErrorDomain", EPERM}};
  EXPECT_EQ(errnoOf(definite), EACCES);
}

TEST(MacosErrors, UnknownFailureIsAnInputOutputError) {
  EXPECT_EQ(errnoOf({}), EIO);
  EXPECT_EQ(errnoOfOne("NSCocoaErrorDomain", 512), EIO);
  EXPECT_EQ(errnoOfOne("com.example", 513), EIO);
  EXPECT_EQ(errnoOfOne("NSPOSIXErrorDomain", 0), EIO);
  EXPECT_EQ(errnoOfOne("NSPOSIXErrorDomain", std::int64_t{1} << 40), EIO);
}

}  // namespace
}  // namespace dunmere::test
