// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "halvora/platform/json.h"

namespace halvora {
namespace {

TEST(JsonValue, IsNullUnlessSaidOtherwise) {
  const JsonValue value;
  EXPECT_TRUE(value.isNull());
  EXPECT_EQ(value.boolean(), nullptr);
  EXPECT_EQ(value.integer(), nullptr);
  EXPECT_EQ(value.real(), nullptr);
  EXPECT_EQ(value.text(), nullptr);
  EXPECT_EQ(value.array(), nullptr);
  EXPECT_EQ(value.object(), nullptr);
  EXPECT_EQ(value.number(), std::nullopt);
  EXPECT_EQ(value.wholeNumber(), std::nullopt);
}

TEST(JsonValue, BooleansAreNumbers) {
  EXPECT_EQ(JsonValue(true).number(), 1.0);
  EXPECT_EQ(JsonValue(true).wholeNumber(), 1);
  EXPECT_EQ(JsonValue(false).number(), 0.0);
  EXPECT_EQ(JsonValue(false).wholeNumber(), 0);
  EXPECT_EQ(JsonValue(true).integer(), nullptr);
}

TEST(JsonValue, FractionsTruncateTowardsZero) {
  EXPECT_EQ(JsonValue(7.9).wholeNumber(), 7);
  EXPECT_EQ(JsonValue(-7.9).wholeNumber(), -7);
  EXPECT_EQ(JsonValue(7.9).number(), 7.9);
}

TEST(JsonValue, RealNumbersSaturateAsWholeOnes) {
  EXPECT_EQ(JsonValue(1e30).wholeNumber(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(JsonValue(-1e30).wholeNumber(), std::numeric_limits<std::int64_t>::min());
}

TEST(JsonValue, LargeIntegersStayExact) {
  EXPECT_EQ(JsonValue(std::int64_t{9007199254740993}).wholeNumber(), 9007199254740993);
}

TEST(JsonValue, TextsAndContainersAreNoNumbers) {
  EXPECT_EQ(JsonValue(std::string("7")).number(), std::nullopt);
  EXPECT_EQ(JsonValue(std::string("7")).wholeNumber(), std::nullopt);
  EXPECT_EQ(JsonValue(JsonValue::Array{}).wholeNumber(), std::nullopt);
  EXPECT_EQ(JsonValue(JsonValue::Object{}).number(), std::nullopt);
}

TEST(JsonValue, FindsTheFirstMemberOfAName) {
  JsonValue::Object members;
  members.push_back({"a", JsonValue(std::int64_t{1})});
  members.push_back({"a", JsonValue(std::int64_t{2})});
  members.push_back({"A", JsonValue(std::int64_t{3})});
  const JsonValue object(std::move(members));
  ASSERT_NE(object.find("a"), nullptr);
  EXPECT_EQ(object.find("a")->wholeNumber(), 1);
  ASSERT_NE(object.find("A"), nullptr);
  EXPECT_EQ(object.find("A")->wholeNumber(), 3);
  EXPECT_EQ(object.find("b"), nullptr);
  EXPECT_EQ(object.find(""), nullptr);
}

TEST(JsonValue, FindsNothingInWhatIsNoObject) {
  EXPECT_EQ(JsonValue().find("a"), nullptr);
  EXPECT_EQ(JsonValue(std::string("a")).find("a"), nullptr);
  EXPECT_EQ(JsonValue(JsonValue::Array{JsonValue(true)}).find("a"), nullptr);
}

}  // namespace
}  // namespace halvora
