// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/user_defaults.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"
#include "tests/support/other_country.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

std::optional<std::string> textOf(const DefaultsValue& value) {
  VirtualDefaults defaults;
  defaults.set("key", value);
  return textForKey(defaults, "key");
}

std::int64_t integerOf(const DefaultsValue& value) {
  VirtualDefaults defaults;
  defaults.set("key", value);
  return integerForKey(defaults, "key");
}

TEST(TextForKey, ATextIsItself) {
  EXPECT_EQ(textOf(std::string("a b")), "a b");
  EXPECT_EQ(textOf(std::string()), "");
}

TEST(TextForKey, AWholeNumberIsItsDecimalText) {
  EXPECT_EQ(textOf(std::int64_t{-12}), "-12");
  EXPECT_EQ(textOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(TextForKey, FlagsAndFractionsHaveTextsToo) {
  EXPECT_EQ(textOf(true), "1");
  EXPECT_EQ(textOf(false), "0");
  EXPECT_EQ(textOf(1.5), "1.5");
  EXPECT_EQ(textOf(7.0), "7");
  EXPECT_EQ(textOf(-7.0), "-7");
  EXPECT_EQ(textOf(1e21), "1" + std::string(21, '0'));
  EXPECT_EQ(textOf(0.0), "0");
}

TEST(TextForKey, WhatIsNoNumberHasATextToo) {
  EXPECT_EQ(textOf(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(textOf(-std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(textOf(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(textOf(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(TextForKey, IsTheSameInEveryCountry) {
  const OtherCountry abroad;
  EXPECT_EQ(textOf(7.0), "7");
  EXPECT_EQ(textOf(1234.5), "1234.5");
  EXPECT_EQ(textOf(std::int64_t{1234567}), "1234567");
  if (!abroad.isWhole()) GTEST_SKIP() << "no locale with a decimal comma can be had here";
}

TEST(TextForKey, AnythingElseIsNone) {
  EXPECT_EQ(textOf(Date{5}), std::nullopt);
  EXPECT_EQ(textOf(DefaultsArray{DefaultsValue(std::string("a"))}), std::nullopt);
  EXPECT_EQ(textForKey(VirtualDefaults(), "key"), std::nullopt);
}

TEST(IntegerForKey, NumbersAreTruncated) {
  EXPECT_EQ(integerOf(std::int64_t{-12}), -12);
  EXPECT_EQ(integerOf(3.9), 3);
  EXPECT_EQ(integerOf(-3.9), -3);
  EXPECT_EQ(integerOf(1e300), std::numeric_limits<std::int64_t>::max());
}

TEST(IntegerForKey, ATextCountsByTheIntegerItBeginsWith) {
  EXPECT_EQ(integerOf(std::string(" 42 seats")), 42);
  EXPECT_EQ(integerOf(std::string("seat 42")), 0);
  EXPECT_EQ(integerOf(std::string(40, '9')), std::numeric_limits<std::int64_t>::max());
}

TEST(IntegerForKey, AFlagIs1Or0) {
  EXPECT_EQ(integerOf(true), 1);
  EXPECT_EQ(integerOf(false), 0);
}

TEST(IntegerForKey, AnythingElseIs0) {
  EXPECT_EQ(integerOf(Date{5}), 0);
  EXPECT_EQ(integerOf(DefaultsArray{DefaultsValue(std::int64_t{4})}), 0);
  EXPECT_EQ(integerOf(DefaultsDictionary{{"a", std::int64_t{4}}}), 0);
  EXPECT_EQ(integerForKey(VirtualDefaults(), "key"), 0);
}

TEST(DefaultsValue, ComparesByKindAndValue) {
  EXPECT_EQ(DefaultsValue(std::int64_t{1}), DefaultsValue(std::int64_t{1}));
  EXPECT_FALSE(DefaultsValue(std::int64_t{1}) == DefaultsValue(1.0));
  EXPECT_FALSE(DefaultsValue(std::int64_t{1}) == DefaultsValue(true));
  EXPECT_FALSE(DefaultsValue(Date{1}) == DefaultsValue(1.0));
  const DefaultsDictionary nested{{"a", DefaultsArray{DefaultsValue(std::string("x"))}}};
  const DefaultsDictionary other{{"a", DefaultsArray{DefaultsValue(std::string("y"))}}};
  EXPECT_EQ(DefaultsValue(nested), DefaultsValue(nested));
  EXPECT_FALSE(DefaultsValue(nested) == DefaultsValue(other));
}

}  // namespace
}  // namespace halvora
