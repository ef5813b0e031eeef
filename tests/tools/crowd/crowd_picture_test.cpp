// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/crowd_picture.h"

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using testing::Each;
using testing::ElementsAre;

using Rgb = std::array<int, 3>;

// Seats in a row, ten pixels apart, in a picture in which they are 20 apart.
struct Plan {
  explicit Plan(std::vector<CrowdSeat> its) : seats(std::move(its)) {}
  std::vector<CrowdSeat> seats;
  CrowdPicture picture{seats, 244, 64};
  std::vector<std::uint8_t> rgb = std::vector<std::uint8_t>(244 * 64 * 3);

  Rgb at(int x, int y) const {
    const auto first = static_cast<std::size_t>(y * 244 + x) * 3;
    return {rgb[first], rgb[first + 1], rgb[first + 2]};
  }
};

std::vector<CrowdSeat> rowOf(int count, bool isStanding) {
  std::vector<CrowdSeat> seats;
  for (int at = 0; at < count; ++at) seats.push_back({{at * 10, 0}, "A", isStanding});
  return seats;
}

CrowdLight lightOf(int red, int green, int blue, bool isTorchOn = false) {
  CrowdLight light;
  light.red = static_cast<std::uint8_t>(red);
  light.green = static_cast<std::uint8_t>(green);
  light.blue = static_cast<std::uint8_t>(blue);
  light.isTorchOn = isTorchOn;
  return light;
}

// The row fills the picture's width but for its margins: 220 pixels for 101 of the map.
int columnOf(int seat) { return static_cast<int>(12 + (seat * 10 + 0.5) * 220 / 101); }

TEST(CrowdPicture, ASeatIsADiscInItsLight) {
  Plan plan(rowOf(11, false));
  std::vector<CrowdLight> lights(11);
  lights[3] = lightOf(255, 0, 0);
  lights[5] = lightOf(0, 0, 255);
  plan.picture.draw(lights, plan.rgb);
  EXPECT_THAT(plan.at(columnOf(3), 32), ElementsAre(255, 26, 26));
  EXPECT_THAT(plan.at(columnOf(5), 32), ElementsAre(26, 26, 255));
  EXPECT_THAT(plan.at(columnOf(4), 32), Each(26));
  const Rgb hall = plan.at(0, 0);
  EXPECT_EQ(plan.at((columnOf(3) + columnOf(4)) / 2, 32 - 9), hall);
  EXPECT_EQ(plan.at(columnOf(3), 32 - 20), hall);
}

TEST(CrowdPicture, AStandingPlaceFillsItsRoom) {
  Plan plan(rowOf(11, true));
  const std::vector<CrowdLight> lights(11, lightOf(0, 255, 0));
  plan.picture.draw(lights, plan.rgb);
  for (int x = columnOf(0); x <= columnOf(10); ++x) {
    EXPECT_EQ(plan.at(x, 32)[1], 255) << x;
    EXPECT_EQ(plan.at(x, 32 - 8)[1], 255) << x;
  }
}

TEST(CrowdPicture, ATorchIsAWhiteMiddle) {
  Plan plan(rowOf(11, false));
  std::vector<CrowdLight> lights(11, lightOf(255, 0, 0));
  lights[5].isTorchOn = true;
  plan.picture.draw(lights, plan.rgb);
  EXPECT_THAT(plan.at(columnOf(5), 32), Each(255));
  EXPECT_THAT(plan.at(columnOf(5) + 7, 32), ElementsAre(255, 26, 26));
  EXPECT_THAT(plan.at(columnOf(6), 32), ElementsAre(255, 26, 26));
}

TEST(CrowdPicture, SeatsFarApartAndAloneAreDrawnToo) {
  for (const auto& seats :
       {std::vector<CrowdSeat>{{{5, 5}, "A", false}},
        std::vector<CrowdSeat>{{{INT64_MIN / 4, 0}, "A", false}, {{INT64_MAX / 4, 0}, "A", false}},
        std::vector<CrowdSeat>(3, CrowdSeat{{5, 5}, "A", false}), std::vector<CrowdSeat>{}}) {
    Plan plan(seats);
    const std::vector<CrowdLight> lights(seats.size(), lightOf(255, 255, 255));
    plan.picture.draw(lights, plan.rgb);
    const bool isLit = std::find(plan.rgb.begin(), plan.rgb.end(), 255) != plan.rgb.end();
    EXPECT_EQ(isLit, !seats.empty());
  }
}

TEST(CrowdPicture, SeatsDrawnOneByOneMakeTheSamePicture) {
  const Plan plan(rowOf(11, false));
  std::vector<CrowdLight> lights;
  for (int at = 0; at < 11; ++at)
    lights.push_back(lightOf(at * 20, 255 - at * 20, at, at % 3 == 0));
  std::vector<std::uint8_t> rgb(plan.rgb);
  plan.picture.draw(lights, rgb);
  std::vector<std::uint32_t> words(rgb.size() / 3);
  plan.picture.drawHall(words);
  const std::vector<CrowdLight> before(11, lightOf(1, 2, 3, true));
  for (const auto& shown : {before, lights}) {
    for (std::uint32_t seat = 0; seat < 11; ++seat) {
      plan.picture.drawSeats(shown, std::array{seat}, words);
    }
  }
  for (std::size_t at = 0; at < words.size(); ++at) {
    const std::uint32_t word = 0xFF000000U | std::uint32_t{rgb[at * 3]} << 16 |
                               std::uint32_t{rgb[at * 3 + 1]} << 8 | rgb[at * 3 + 2];
    ASSERT_EQ(words[at], word) << at;
  }
}

TEST(CrowdPicture, DiscsMayLieBeyondTheEdges) {
  const std::vector<CrowdDisc> discs = {
      {0, 0, 4, false}, {1e9, -1e9, 3, false}, {-50, 8, 100, true}, {20, 8, 3, false}};
  const CrowdPicture picture(std::span<const CrowdDisc>(discs), 40, 16);
  const std::vector<CrowdLight> lights = {lightOf(255, 0, 0), lightOf(1, 1, 1), lightOf(0, 0, 255),
                                          lightOf(0, 255, 0)};
  std::vector<std::uint32_t> words(40 * 16);
  picture.drawHall(words);
  picture.drawSeats(lights, std::array{0U, 1U, 2U, 3U}, words);
  EXPECT_EQ(words[0], 0xFFFF1A1AU);
  EXPECT_EQ(words[8 * 40 + 20], 0xFF1A1AFFU) << "the first of those that cover all of it";
  EXPECT_EQ(words[15 * 40 + 39], 0xFF1A1AFFU);
}

TEST(DistancesToNearest, AreTheNearestsWhereverTheyLie) {
  const std::vector<CrowdSeat> seats = {{{0, 0}, "A", false},   {{3, 4}, "A", false},
                                        {{100, 0}, "A", false}, {{100, 1}, "A", false},
                                        {{4, 100}, "A", false}, {{100, 1}, "A", false}};
  EXPECT_THAT(distancesToNearest(seats),
              ElementsAre(5, 5, 1, 0, testing::DoubleNear(96.005, 0.001), 0));
}

}  // namespace
}  // namespace halvora
