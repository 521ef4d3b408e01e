#include "sweeper/display_text.h"

#include <gtest/gtest.h>

#include <string>

namespace dunmere {
namespace {

std::string isolated(const std::string& text) {
  return "\u2066" + text + "\u2069";
}

TEST(DisplayText, OrdinaryTextIsUnchanged) {
  for (const char* text :
       {"", "Photos", "a b.txt", "café", "日本", "Ελλάδα", "…“”·—’", "\U0001F600", "~!@#$%^&*()<b>"}) {
    EXPECT_EQ(displayText(text), text);
  }
}

TEST(DisplayText, ComposedAndDecomposedLettersStayAsSpelt) {
  EXPECT_EQ(displayText("e\u0301"), "e\u0301");
  EXPECT_EQ(displayText("\u00E9"), "\u00E9");
}

TEST(DisplayText, JoinersStayWhereTheyJoin) {
  EXPECT_EQ(displayText("\U0001F468\u200D\U0001F469"), "\U0001F468\u200D\U0001F469");
  EXPECT_EQ(displayText("می\u200Cخواهم"), isolated("می\u200Cخواهم"));
  EXPECT_EQ(displayText("क्\u200Dष"), "क्\u200Dष");
}

TEST(DisplayText, JoinersThatJoinNothingBecomeCodes) {
  EXPECT_EQ(displayText("report\u200D.pdf"), "report[U+200D].pdf");
  EXPECT_EQ(displayText("\u200Creport"), "[U+200C]report");
  EXPECT_EQ(displayText("é\u200Dtude"), "é[U+200D]tude");
  EXPECT_EQ(displayText("क\u200D"), "क[U+200D]");
}

TEST(DisplayText, VariationSelectorsStayWhereTheySelect) {
  for (const char* text : {"\u2764\uFE0F", "1\uFE0F\u20E3", "\u845B\U000E0100", "\u00A9\uFE0F"}) {
    EXPECT_EQ(displayText(text), text);
  }
  EXPECT_EQ(displayText("a\uFE0F.txt"), "a[U+FE0F].txt");
  EXPECT_EQ(displayText("\U000E0100"), "[U+E0100]");
}

TEST(DisplayText, SpacesThatLookLikeTheSpaceBarsAreMadeVisible) {
  for (const char* space :
       {"\u00A0", "\u1680", "\u2000", "\u2003", "\u2009", "\u200A", "\u202F", "\u205F", "\u2800", "\u3000"}) {
    EXPECT_EQ(displayText("a" + std::string(space) + "b"), "a\u2423b");
  }
  EXPECT_EQ(displayText(" a b "), " a b ");
}

TEST(DisplayText, NamesWithRightToLeftLettersAreIsolated) {
  for (const char* name : {"שלום", "שלום.txt", "a שלום", "سلام 12", "\uFB1D", "\uFEFC", "\U00010800", "\U0001E900"}) {
    EXPECT_EQ(displayText(name), isolated(name));
  }
  EXPECT_EQ(displayText("של\u202Eום"), isolated("של[U+202E]ום"));
}

TEST(DisplayPath, IsShownComponentByComponent) {
  EXPECT_EQ(displayPath("/"), "/");
  EXPECT_EQ(displayPath("/Users/me"), "/Users/me");
  EXPECT_EQ(displayPath("/שלום/a\nb/سلام"), "/" + isolated("שלום") + "/a[U+000A]b/" + isolated("سلام"));
}

TEST(DisplayText, ControlCharactersBecomeCodes) {
  EXPECT_EQ(displayText(std::string_view("\0", 1)), "[U+0000]");
  EXPECT_EQ(displayText("a\nb"), "a[U+000A]b");
  EXPECT_EQ(displayText("a\tb"), "a[U+0009]b");
  EXPECT_EQ(displayText("\r\x1B[0m\x1F"), "[U+000D][U+001B][0m[U+001F]");
  EXPECT_EQ(displayText("~\x7F"), "~[U+007F]");
  EXPECT_EQ(displayText("\xC2\x80"), "[U+0080]");
  EXPECT_EQ(displayText("\xC2\x85"), "[U+0085]");
  EXPECT_EQ(displayText("\xC2\x9F"), "[U+009F]");
  EXPECT_EQ(displayText("\xC2\xA1"), "\xC2\xA1");
}

TEST(DisplayText, OverriddenNameCannotDisguiseItself) {
  EXPECT_EQ(displayText("invoice\u202Efdp.exe"), "invoice[U+202E]fdp.exe");
}

struct Invisible {
  const char* spelling;
  const char* shown;
};

class DisplayTextOfInvisible : public ::testing::TestWithParam<Invisible> {};

TEST_P(DisplayTextOfInvisible, IsItsCode) {
  EXPECT_EQ(displayText(GetParam().spelling), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(BidirectionalControls, DisplayTextOfInvisible,
                         ::testing::Values(Invisible{"\u061C", "[U+061C]"}, Invisible{"\u200E", "[U+200E]"},
                                           Invisible{"\u200F", "[U+200F]"}, Invisible{"\u202A", "[U+202A]"},
                                           Invisible{"\u202B", "[U+202B]"}, Invisible{"\u202C", "[U+202C]"},
                                           Invisible{"\u202D", "[U+202D]"}, Invisible{"\u202E", "[U+202E]"},
                                           Invisible{"\u2066", "[U+2066]"}, Invisible{"\u2067", "[U+2067]"},
                                           Invisible{"\u2068", "[U+2068]"}, Invisible{"\u2069", "[U+2069]"}));

INSTANTIATE_TEST_SUITE_P(
    OtherFormatCharacters, DisplayTextOfInvisible,
    ::testing::Values(Invisible{"\u00AD", "[U+00AD]"}, Invisible{"\u180E", "[U+180E]"}, Invisible{"\u200B", "[U+200B]"},
                      Invisible{"\u2028", "[U+2028]"}, Invisible{"\u2029", "[U+2029]"}, Invisible{"\u2060", "[U+2060]"},
                      Invisible{"\u2064", "[U+2064]"}, Invisible{"\u206A", "[U+206A]"}, Invisible{"\u206F", "[U+206F]"},
                      Invisible{"\uFEFF", "[U+FEFF]"}, Invisible{"\u034F", "[U+034F]"}, Invisible{"\u115F", "[U+115F]"},
                      Invisible{"\u1160", "[U+1160]"}, Invisible{"\u17B4", "[U+17B4]"}, Invisible{"\u3164", "[U+3164]"},
                      Invisible{"\uFFA0", "[U+FFA0]"}, Invisible{"\U0001D159", "[U+1D159]"},
                      Invisible{"\U0001D173", "[U+1D173]"}, Invisible{"\U000E0080", "[U+E0080]"},
                      Invisible{"\U000E0FFF", "[U+E0FFF]"}, Invisible{"\uFFF9", "[U+FFF9]"},
                      Invisible{"\uFFFB", "[U+FFFB]"}, Invisible{"\U000E0000", "[U+E0000]"},
                      Invisible{"\U000E0001", "[U+E0001]"}, Invisible{"\U000E007F", "[U+E007F]"}));

TEST(DisplayText, NeighboursOfInvisibleCharactersStay) {
  for (const char* text : {"\u00AC", "\u00AE", "\u0350", "\u1161", "\u17B3", "\u180D", "\u180F", "\u2010", "\u2027",
                           "\u2070", "\u27FF", "\u3001", "\u3165", "\uFFA1", "\uFFFC", "\U0001D158", "\U000E1000"}) {
    EXPECT_EQ(displayText(text), text);
  }
}

TEST(DisplayText, EachInvalidByteIsReplaced) {
  EXPECT_EQ(displayText("caf\xE9"), "caf\uFFFD");
  EXPECT_EQ(displayText("\xFF\xFE"), "\uFFFD\uFFFD");
  EXPECT_EQ(displayText("a\x80z"), "a\uFFFDz");
}

TEST(DisplayText, CutOffSequencesAreInvalid) {
  EXPECT_EQ(displayText("\xC3"), "\uFFFD");
  EXPECT_EQ(displayText("\xE2\x82"), "\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xF0\x9F\x98"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xE2\x82z"), "\uFFFD\uFFFDz");
  EXPECT_EQ(displayText(std::string_view("\u00E9").substr(0, 1)), "\uFFFD");
  EXPECT_EQ(displayText("\xE2\xC3\xA9"), "\uFFFD\u00E9");
}

TEST(DisplayText, OverlongSequencesAreInvalid) {
  EXPECT_EQ(displayText("\xC0\xAF"), "\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xC1\xBF"), "\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xE0\x80\xAF"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xF0\x80\x80\xAF"), "\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(DisplayText, SurrogatesAreInvalid) {
  EXPECT_EQ(displayText("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xED\xBF\xBF"), "\uFFFD\uFFFD\uFFFD");
}

TEST(DisplayText, EndsOfTheEncodingAreKept) {
  EXPECT_EQ(displayText("\xED\x9F\xBF"), "\xED\x9F\xBF");
  EXPECT_EQ(displayText("\xEE\x80\x80"), "\xEE\x80\x80");
  EXPECT_EQ(displayText("\xF4\x8F\xBF\xBF"), "\xF4\x8F\xBF\xBF");
}

TEST(DisplayText, AboveTheLastCharacterIsInvalid) {
  EXPECT_EQ(displayText("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(displayText("\xF5\x80\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
}

}  // namespace
}  // namespace dunmere
