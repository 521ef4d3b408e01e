// What some tests need and a machine may refuse, asked in one place.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace dunmere::test {

enum class Feature {
  privateMounts,
  overlayMounts,
  loopDevices,
  btrfs,  ///< on a loop device
  fuse,
  automounts,
  tracing,
  secondUser,        ///< files of another user, and becoming one
  threadLimit,       ///< that binds
  deviceFiles,       ///< making them; the drivers need not exist
  blockDeviceFiles,  ///< the same
  sys,
  display,
};

/// Which feature has this name, that of its constant.
std::optional<Feature> featureNamed(std::string_view name);

/// Why a test that needs the feature is not run; empty where the machine has it. Tried in a child process, each time:
/// call it before the test has other threads or failures.
std::string refusalOf(Feature feature);

}  // namespace dunmere::test

/// At the head of a test, or of SetUp(): reports the test as not run where the machine refuses the feature.
#define DUNMERE_NEEDS(feature)                                       \
  do {                                                               \
    const std::string refusal = ::dunmere::test::refusalOf(feature); \
    if (!refusal.empty()) GTEST_SKIP() << refusal;                   \
  } while (false)
