// SPDX-License-Identifier: Apache-2.0
// The picture of a map: where seats are, which colours they have, and how large it becomes.
#include "venue/plan/seat_plan.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "tests/venue/plan/picture_probe.h"
#include "venue/plan/named_map.h"

namespace halvora {
namespace {

const Rgb kBackground = {16, 18, 24};
const Rgb kWarning = {255, 40, 70};
const Rgb kFirst = {76, 155, 232};
const Rgb kSecond = {242, 193, 78};

Image drawn(const std::string& document, std::uint32_t size = 1600) {
  return drawSeatPlan(seatMapOf(document, {}, ExactJsonReader()), size);
}

/// Seats side by side from (0, 0) to (columns - 1, rows - 1), all in one section.
std::string block(int columns, int rows, const std::string& name = "Section") {
  std::string text = R"({"name": ")" + name + R"(", "rows": [)";
  for (int row = 0; row < rows; ++row) {
    text += row > 0 ? R"(,{"seats": [)" : R"({"seats": [)";
    for (int column = 0; column < columns; ++column) {
      text += (column > 0 ? R"(,{"x":)" : R"({"x":)") + std::to_string(column) + R"(,"y":)" +
              std::to_string(row) + "}";
    }
    text += "]}";
  }
  return text + "]}";
}

TEST(SeatPlan, SeatsLieAtTheirPositionsInTheirSectionsColour) {
  // Two sections, so far apart that a plan of 1600 pixels puts x at 48 + 15.04 x.
  const Image image = drawn(R"({"s": {"1": {"1": {"1": [0, 0], "2": [100, 0]}},
                                      "2": {"1": {"1": [0, 50], "2": [50, 50]}}}})");
  EXPECT_EQ(image.width, 1600U);
  const auto at = [&](double x, double y) {
    return pixelOf(image, static_cast<std::uint32_t>(48 + 15.04 * x),
                   static_cast<std::uint32_t>(108 + 15.04 * y));
  };
  EXPECT_EQ(at(100, 0), kFirst);
  EXPECT_EQ(at(50, 50), kSecond);
  EXPECT_EQ(at(50, 25), kBackground);
  EXPECT_EQ(at(100, 50), kBackground);
  EXPECT_EQ(pixelsOf(image, kWarning), 0U);
}

TEST(SeatPlan, SeatsThatShareAPixelAreMarkedInAColourOfTheirOwn) {
  const Image image = drawn(R"({"s": {"1": {"1": {"1": [0, 0], "2": [100, 0], "3": [100, 0]}}}})");
  EXPECT_EQ(pixelOf(image, 48 + 1504, 148), kWarning);
  EXPECT_GT(pixelsOf(image, kWarning), 50U);
}

TEST(SeatPlan, StandingAreasHaveABoxAround) {
  const auto coloured = [](const std::string& name) {
    return pixelsOf(drawn("[" + block(3, 3, name) + "]"), kFirst);
  };
  EXPECT_GT(coloured("Standing"), coloured("Sitting_") + 500);
}

TEST(SeatPlan, TheLongerSideOfThePlanIsTheSizeAskedFor) {
  EXPECT_EQ(drawn("[" + block(100, 20) + "]").width, 1600U);
  EXPECT_EQ(drawn("[" + block(100, 20) + "]", 400).width, 400U);
  const Image tall = drawn("[" + block(20, 100) + "]", 1000);
  EXPECT_GE(tall.height, 1000U);
  EXPECT_LT(tall.height, 1200U);
  EXPECT_LT(tall.width, 700U);
}

TEST(SeatPlan, AFewSeatsStaySmall) {
  for (const char* document :
       {R"([{"rows": [{"seats": [{"x": 5, "y": 5}]}]}])",
        R"([{"rows": [{"seats": [{"x": 5, "y": 5}, {"x": 6, "y": 5}]}]}])"}) {
    const Image image = drawn(document);
    EXPECT_LE(image.width, 800U);
    EXPECT_LT(image.height, 400U);
    EXPECT_GT(pixelsOf(image, kFirst), 2U);
  }
}

TEST(SeatPlan, PositionsAtTheEndsOf64BitsAreDrawn) {
  const Image image =
      drawn(R"({"s": {"1": {"1": {"1": [1e30, -1e30], "2": [-1e30, 1e30]}}}})", 300);
  EXPECT_EQ(image.width, 300U);
  EXPECT_GT(pixelsOf(image, kFirst), 2U);
}

TEST(SeatPlan, ManySectionsDoNotMakeAnEndlessList) {
  std::string sections;
  for (int at = 0; at < 400; ++at) {
    sections += (at > 0 ? "," : "") + block(2, 2, "A section with quite a long name");
  }
  const Image few = drawn("[" + block(2, 2) + "]", 800);
  const Image many = drawn("[" + sections + "]", 800);
  EXPECT_GT(many.height, few.height);
  EXPECT_LT(many.height, few.height + 400);
}

TEST(SeatPlan, SeatsOfADenseMapAreApart) {
  // 120 seats on 1504 pixels: 12.6 pixels from one to the next, with background in between.
  const Image image = drawn("[" + block(120, 40) + "]");
  const std::uint32_t y = 108;
  EXPECT_EQ(pixelOf(image, 48, y), kFirst);
  EXPECT_EQ(pixelOf(image, 48 + 6, y), kBackground);
}

}  // namespace
}  // namespace halvora
