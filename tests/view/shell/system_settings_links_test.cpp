#include "shell/system_settings_links.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "tests/support/fake_url_opener.h"

namespace dunmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string first = "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
const std::string second = "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?privacy_AllFiles";
const std::string third = "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension";

class SystemSettingsLinksTest : public testing::Test {
 protected:
  test::FakeUrlOpener opener;
};

TEST_F(SystemSettingsLinksTest, TheFirstPageThatOpensEndsTheSearch) {
  opener.opening = {first, second, third};
  SystemSettingsLinks::openFullDiskAccess(opener);
  EXPECT_THAT(opener.asked, ElementsAre(first));
}

TEST_F(SystemSettingsLinksTest, TheSecondPageIsTriedAfterTheFirst) {
  opener.opening = {second, third};
  SystemSettingsLinks::openFullDiskAccess(opener);
  EXPECT_THAT(opener.asked, ElementsAre(first, second));
}

TEST_F(SystemSettingsLinksTest, ThePageWithoutAnAnchorIsTheLast) {
  opener.opening = {third};
  SystemSettingsLinks::openFullDiskAccess(opener);
  EXPECT_THAT(opener.asked, ElementsAre(first, second, third));
}

TEST_F(SystemSettingsLinksTest, WhenNoneOpensEachWasTriedOnce) {
  SystemSettingsLinks::openFullDiskAccess(opener);
  EXPECT_THAT(opener.asked, ElementsAre(first, second, third));
}

TEST_F(SystemSettingsLinksTest, WhatIsNoUrlIsPassedOverUnasked) {
  constexpr std::array<std::string_view, 10> candidates = {
      "", "no-scheme", ":no-scheme", "1st:digit-first", "a b:space", "a: b", "a:%4", "a:%4g", "a:\xC3\xA9", "a:<b>"};
  EXPECT_FALSE(SystemSettingsLinks::openFirst(candidates, opener));
  EXPECT_THAT(opener.asked, IsEmpty());
}

TEST_F(SystemSettingsLinksTest, TheSearchGoesOnAfterWhatIsNoUrl) {
  constexpr std::array<std::string_view, 3> candidates = {"not a url", "settings+x.y-z:page?q=%4F#part", "other:page"};
  opener.opening = {"settings+x.y-z:page?q=%4F#part", "other:page"};
  EXPECT_TRUE(SystemSettingsLinks::openFirst(candidates, opener));
  EXPECT_THAT(opener.asked, ElementsAre("settings+x.y-z:page?q=%4F#part"));
}

}  // namespace
}  // namespace dunmere
