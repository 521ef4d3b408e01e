// The order of names.
#include "platform/icu/icu_name_order.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/child_process.h"

namespace dunmere::test {
namespace {

using Pair = std::pair<std::string, std::string>;

const std::vector<Pair> kBefore = {
    {"alpha", "Beta"},
    {"Beta", "gamma"},
    {"apple", "Zebra"},
    {"a", "B"},
    {"file10", "file2"},
    {"file01", "file1"},
    {"1", "a"},
    {".hidden", "hidden"},
    {".a", "0"},
    {"_a", "a"},
    {"-a", "a"},
    {" a", "a"},
    {"_x", ".x"},
    {"-x", ".x"},
    {".x", "#x"},
    {"~x", "$x"},
    {"$x", "0"},
    {"a b", "ab"},
    {"a-b", "ab"},
    {"a-b", "a.b"},
    {"a_b", "a-b"},
    {"cafe", "caf\u00e9"},
    {"caf\u00e9", "cafz"},
    {"naive", "na\u00efve"},
    {"strasse", "Stra\u00dfe"},
    {"\u00c5", "z"},
    {"\u00f8", "p"},
    {"ae", "\u00e6"},
    {"\u00e6", "af"},
    {"foo", "foo.txt"},
    {"foo bar.txt", "foo.txt"},
    {"(x)", "[x]"},
    {"z", "\u65e5\u672c"},
    {"\U0001f600", "0"},
};

const std::vector<Pair> kEqual = {{"README", "readme"}, {"Caf\u00e9", "caf\u00e9"}, {"\u00e9", "e\u0301"}};

TEST(IcuNameOrder, PairsOfAmericanEnglish) {
  for (const char* locale : {"en_US", "en_US.UTF-8", "C", "C.UTF-8", "POSIX", "", "no such locale", "xx_YY@q=;"}) {
    const IcuNameOrder order(locale);
    for (const auto& [before, after] : kBefore) {
      EXPECT_LT(order.sortKey(before), order.sortKey(after)) << before << " < " << after << " in '" << locale << "'";
    }
    for (const auto& [one, other] : kEqual) {
      EXPECT_EQ(order.sortKey(one), order.sortKey(other)) << one << " = " << other << " in '" << locale << "'";
    }
  }
}

TEST(IcuNameOrder, AsciiOrderPunctuationThenDigitsThenLetters) {
  const IcuNameOrder order("en_US");
  const std::string ascii = " _-,;:!?.'\"()[]{}@*/\\&#%`^+<=>|~$0123456789abcdefghijklmnopqrstuvwxyz";
  for (std::size_t i = 1; i < ascii.size(); ++i) {
    EXPECT_LT(order.sortKey({&ascii[i - 1], 1}), order.sortKey({&ascii[i], 1})) << ascii[i - 1] << " < " << ascii[i];
  }
}

TEST(IcuNameOrder, LocaleOfTheUserDecides) {
  const IcuNameOrder swedish("sv_SE.UTF-8");
  EXPECT_LT(swedish.sortKey("z"), swedish.sortKey("\u00e5"));
  const IcuNameOrder american("en_US");
  EXPECT_LT(american.sortKey("\u00e5"), american.sortKey("z"));
  // Danish puts capitals first and Thai ignores punctuation by themselves.
  for (const char* locale : {"da_DK", "th_TH"}) {
    const IcuNameOrder order(locale);
    EXPECT_EQ(order.sortKey("README"), order.sortKey("readme")) << locale;
    EXPECT_LT(order.sortKey("a-b"), order.sortKey("ab")) << locale;
  }
}

TEST(IcuNameOrder, NamesThatAreNotUtf8HaveAFixedPlace) {
  const IcuNameOrder order("en_US");
  EXPECT_EQ(order.sortKey("caf\xe9"), order.sortKey("caf\xe9"));
  EXPECT_NE(order.sortKey("caf\xe9"), order.sortKey("caf\xe8"));
  EXPECT_LT(order.sortKey("caf"), order.sortKey("caf\xe9"));
  EXPECT_LT(order.sortKey("caf\xe9"), order.sortKey("d"));
  EXPECT_NE(order.sortKey("\xff"), order.sortKey("\ufffd"));
  EXPECT_FALSE(order.sortKey("\xed\xa0\x80").empty());
  EXPECT_FALSE(order.sortKey("\xf5\x80\x80\x80\xc0\x80").empty());
  EXPECT_FALSE(order.sortKey(std::string(255, '\xff')).empty());
}

TEST(IcuNameOrder, EmptyNameIsFirst) {
  const IcuNameOrder order("en_US");
  EXPECT_LT(order.sortKey(""), order.sortKey(" "));
}

TEST(IcuNameOrder, LongNamesKeepTheirWholeKey) {
  const IcuNameOrder order("en_US");
  std::string accents;
  for (int i = 0; i < 127; ++i) accents += "\u1e69";
  EXPECT_LT(order.sortKey(accents + "a"), order.sortKey(accents + "b"));
  std::string ideographs;
  for (int i = 0; i < 85; ++i) ideographs += "\u9f98";
  EXPECT_LT(order.sortKey(ideographs), order.sortKey(ideographs + "a"));
}

TEST(IcuNameOrder, ThreadsShareOneOrder) {
  const IcuNameOrder order("en_US");
  const std::string expected = order.sortKey("na\u00efve file 10");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 1000; ++round) EXPECT_EQ(order.sortKey("na\u00efve file 10"), expected);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(IcuNameOrder, UsersLocaleComesFromTheSystemsSettings) {
  const auto zBeforeA = [](const char* variable, const char* value) {
    return runInChild([=] {
             for (const char* name : {"LC_ALL", "LC_COLLATE", "LC_MESSAGES", "LANG"}) ::unsetenv(name);
             ::setenv(variable, value, 1);
             const IcuNameOrder order(IcuNameOrder::userLocale());
             return order.sortKey("z") < order.sortKey("\u00e5") ? 10 : 11;
           })
        .exitCode;
  };
  EXPECT_EQ(zBeforeA("LC_ALL", "sv_SE.UTF-8"), 10);
  EXPECT_EQ(zBeforeA("LANG", "sv_SE.UTF-8"), 10);
  EXPECT_EQ(zBeforeA("LANG", "en_US.UTF-8"), 11);
  EXPECT_EQ(zBeforeA("LC_ALL", "C.UTF-8"), 11);
  EXPECT_EQ(zBeforeA("LC_ALL", "C"), 11);
  EXPECT_EQ(zBeforeA("LC_ALL", "no such locale"), 11);
}

}  // namespace
}  // namespace dunmere::test
