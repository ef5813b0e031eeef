// SPDX-License-Identifier: Apache-2.0
#include "text/numbers.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "halvora/platform/time.h"

namespace halvora {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

TEST(IntegerValue, ReadsDecimalDigits) {
  EXPECT_EQ(integerValue("0"), 0);
  EXPECT_EQ(integerValue("42"), 42);
  EXPECT_EQ(integerValue("007"), 7);
}

TEST(IntegerValue, TakesOneSign) {
  EXPECT_EQ(integerValue("-42"), -42);
  EXPECT_EQ(integerValue("+42"), 42);
  EXPECT_EQ(integerValue("--42"), 0);
  EXPECT_EQ(integerValue("+-42"), 0);
  EXPECT_EQ(integerValue("- 42"), 0);
}

TEST(IntegerValue, SkipsLeadingBlanks) {
  EXPECT_EQ(integerValue("  \t\n\r 42"), 42);
  EXPECT_EQ(integerValue(" -42"), -42);
}

TEST(IntegerValue, StopsAtTheFirstOtherCharacter) {
  EXPECT_EQ(integerValue("12px"), 12);
  EXPECT_EQ(integerValue("3.9"), 3);
  EXPECT_EQ(integerValue("1e3"), 1);
  EXPECT_EQ(integerValue("1 2"), 1);
  EXPECT_EQ(integerValue("0x10"), 0);
}

TEST(IntegerValue, WithoutDigitsIs0) {
  for (const char* text : {"", " ", "-", "+", "abc", "x12", ".5", "\xD9\xA1"}) {
    EXPECT_EQ(integerValue(text), 0) << text;
  }
}

TEST(IntegerValue, ReachesBothEndsOf64Bits) {
  EXPECT_EQ(integerValue("9223372036854775807"), kMost);
  EXPECT_EQ(integerValue("9223372036854775806"), kMost - 1);
  EXPECT_EQ(integerValue("-9223372036854775808"), kLeast);
  EXPECT_EQ(integerValue("-9223372036854775807"), kLeast + 1);
}

TEST(IntegerValue, SaturatesBeyond64Bits) {
  EXPECT_EQ(integerValue("9223372036854775808"), kMost);
  EXPECT_EQ(integerValue("-9223372036854775809"), kLeast);
  EXPECT_EQ(integerValue("92233720368547758070"), kMost);
  EXPECT_EQ(integerValue(std::string(400, '9')), kMost);
  EXPECT_EQ(integerValue("-" + std::string(400, '9')), kLeast);
}

TEST(WholeNumber, TruncatesTowardsZero) {
  EXPECT_EQ(wholeNumber(3.9), 3);
  EXPECT_EQ(wholeNumber(-3.9), -3);
  EXPECT_EQ(wholeNumber(-0.5), 0);
}

TEST(WholeNumber, SaturatesAndKnowsNoNumber) {
  EXPECT_EQ(wholeNumber(1e300), kMost);
  EXPECT_EQ(wholeNumber(-1e300), kLeast);
  EXPECT_EQ(wholeNumber(9223372036854775808.0), kMost);
  EXPECT_EQ(wholeNumber(-9223372036854775808.0), kLeast);
  EXPECT_EQ(wholeNumber(std::numeric_limits<double>::infinity()), kMost);
  EXPECT_EQ(wholeNumber(-std::numeric_limits<double>::infinity()), kLeast);
  EXPECT_EQ(wholeNumber(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(WholeNumber, KeepsTheLargestDoubleBelowTheEnd) {
  EXPECT_EQ(wholeNumber(9223372036854774784.0), 9223372036854774784);
}

TEST(Time, ThreePausesOf50MsAre150Ms) { EXPECT_EQ(3 * fromSeconds(0.05), milliseconds(150)); }

TEST(Time, SecondsRoundToTheNearestMicrosecond) {
  EXPECT_EQ(fromSeconds(static_cast<double>(0.124F)), fromSeconds(0.124));
  EXPECT_EQ(fromSeconds(0.0000014), Duration(1));
  EXPECT_EQ(fromSeconds(-0.5), milliseconds(-500));
  EXPECT_EQ(toSeconds(milliseconds(1500)), 1.5);
}

}  // namespace
}  // namespace halvora
