#include "sweeper/byte_count_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>

namespace {

std::string decimalPoint = ".";

}  // namespace

/// Stands in for the C library's function: no locale but "C" is sure to be installed where the tests run.
extern "C" lconv* localeconv() noexcept {
  static lconv convention = {};
  convention.decimal_point = decimalPoint.data();
  return &convention;
}

namespace dunmere {
namespace {

struct Row {
  std::int64_t bytes;
  const char* text;
};

void PrintTo(const Row& row, std::ostream* stream) {
  *stream << row.bytes;
}

class ByteCountText : public ::testing::TestWithParam<Row> {};

TEST_P(ByteCountText, ReadsAs) {
  EXPECT_EQ(byteCountText(GetParam().bytes), GetParam().text);
}

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

INSTANTIATE_TEST_SUITE_P(Bytes, ByteCountText,
                         ::testing::Values(Row{0, "Zero KB"}, Row{1, "1 byte"}, Row{2, "2 bytes"}, Row{12, "12 bytes"},
                                           Row{499, "499 bytes"}, Row{900, "900 bytes"}, Row{999, "999 bytes"}));

INSTANTIATE_TEST_SUITE_P(Kilobytes, ByteCountText,
                         ::testing::Values(Row{1000, "1 KB"}, Row{1023, "1 KB"}, Row{1024, "1 KB"}, Row{1499, "1 KB"},
                                           Row{1501, "2 KB"}, Row{4096, "4 KB"}, Row{8192, "8 KB"}, Row{11999, "12 KB"},
                                           Row{65536, "66 KB"}, Row{131072, "131 KB"}, Row{900000, "900 KB"},
                                           Row{999000, "999 KB"}, Row{999499, "999 KB"}));

INSTANTIATE_TEST_SUITE_P(Megabytes, ByteCountText,
                         ::testing::Values(Row{999500, "1 MB"}, Row{999950, "1 MB"}, Row{999999, "1 MB"},
                                           Row{1000000, "1 MB"}, Row{1040000, "1 MB"}, Row{1048576, "1 MB"},
                                           Row{1100000, "1.1 MB"}, Row{5500000, "5.5 MB"}, Row{10485760, "10.5 MB"},
                                           Row{12345678, "12.3 MB"}, Row{55000000, "55 MB"}, Row{99940000, "99.9 MB"},
                                           Row{99960000, "100 MB"}, Row{123456789, "123.5 MB"},
                                           Row{550000000, "550 MB"}, Row{999900000, "999.9 MB"},
                                           Row{999949999, "999.9 MB"}));

INSTANTIATE_TEST_SUITE_P(Gigabytes, ByteCountText,
                         ::testing::Values(Row{999950000, "1 GB"}, Row{1073741824, "1.07 GB"},
                                           Row{1234567898, "1.23 GB"}, Row{4200000000, "4.2 GB"},
                                           Row{5500000000, "5.5 GB"}, Row{12345678987, "12.35 GB"},
                                           Row{55000000000, "55 GB"}, Row{250685575168, "250.69 GB"},
                                           Row{494384795648, "494.38 GB"}, Row{550000000000, "550 GB"},
                                           Row{994662584320, "994.66 GB"}, Row{999994999999, "999.99 GB"},
                                           Row{1009000000, "1.01 GB"}, Row{1050000000, "1.05 GB"}));

INSTANTIATE_TEST_SUITE_P(LargerUnits, ByteCountText,
                         ::testing::Values(Row{999995000000, "1 TB"}, Row{1995218165760, "2 TB"},
                                           Row{5500000000000, "5.5 TB"}, Row{999994999999999, "999.99 TB"},
                                           Row{999995000000000, "1 PB"}, Row{1000000000000000, "1 PB"},
                                           Row{10000000000000000, "10 PB"}, Row{999994999999999999, "999.99 PB"},
                                           Row{999995000000000000, "1 EB"}, Row{1900000000000000000, "1.9 EB"},
                                           Row{kMax, "9.22 EB"}));

INSTANTIATE_TEST_SUITE_P(Negative, ByteCountText,
                         ::testing::Values(Row{-1, "-1 byte"}, Row{-2, "-2 bytes"}, Row{-1023, "-1 KB"},
                                           Row{-999500, "-1 MB"}, Row{-1234567898, "-1.23 GB"},
                                           Row{-12345678987, "-12.35 GB"}, Row{kMin + 1, "-9.22 EB"},
                                           Row{kMin, "-9.22 EB"}));

/// Sets the decimal point until the end of a test.
class DecimalPoint {
 public:
  explicit DecimalPoint(const char* point) { decimalPoint = point; }
  ~DecimalPoint() { decimalPoint = "."; }
};

TEST(ByteCountTextInALocale, DecimalPointIsTheLocales) {
  const DecimalPoint comma(",");
  EXPECT_EQ(byteCountText(1234567898), "1,23 GB");
  EXPECT_EQ(byteCountText(-12345678), "-12,3 MB");
}

TEST(ByteCountTextInALocale, DecimalPointMayTakeSeveralBytes) {
  const DecimalPoint arabic("٫");
  EXPECT_EQ(byteCountText(5500000000), "5٫5 GB");
}

TEST(ByteCountTextInALocale, WholeNumbersHaveNoDecimalPoint) {
  const DecimalPoint comma(",");
  EXPECT_EQ(byteCountText(550000000), "550 MB");
}

}  // namespace
}  // namespace dunmere
