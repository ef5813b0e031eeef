// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_picture.h"

#include <algorithm>
#include <array>
#include <cmath>

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

// The same picture, worked out pixel by pixel.
TEST(CrowdPicture, EveryPixelIsMixedAsFarAsItsSeatCoversIt) {
  constexpr int kWidth = 34;
  constexpr int kHeight = 20;
  const std::vector<CrowdDisc> discs = {
      {10.3, 8.6, 5.2, false}, {14.9, 9.2, 4.4, false}, {25.5, 9.5, 4, true}, {1, 18, 3, false}};
  const std::vector<CrowdLight> lights = {lightOf(255, 100, 3), lightOf(0, 0, 0, true),
                                          lightOf(7, 200, 90, true), lightOf(1, 2, 250)};
  const CrowdPicture picture(std::span<const CrowdDisc>(discs), kWidth, kHeight);
  std::vector<std::uint8_t> rgb(kWidth * kHeight * 3);
  picture.draw(lights, rgb);
  int mixed = 0;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      long most = 0;
      Rgb expected{12, 13, 16};
      for (std::size_t at = 0; at < discs.size(); ++at) {
        const double across = std::abs(x + 0.5 - discs[at].x);
        const double down = std::abs(y + 0.5 - discs[at].y);
        const double distance =
            discs[at].isSquare ? std::max(across, down) : std::sqrt(across * across + down * down);
        const double within = discs[at].radius + 0.5 - distance;
        const double share = discs[at].isSquare ? (within < 0 ? 0 : 1) : std::clamp(within, 0., 1.);
        const long cover = std::lround(share * 255);
        if (cover <= most) continue;
        most = cover;
        mixed += cover < 255 ? 1 : 0;
        const bool isTorch = lights[at].isTorchOn && distance <= discs[at].radius * 0.45;
        const Rgb hall{12, 13, 16};
        const Rgb light{lights[at].red, lights[at].green, lights[at].blue};
        for (std::size_t channel = 0; channel < 3; ++channel) {
          const long front = isTorch ? 255 : 26 + light[channel] * 229 / 255;
          expected[channel] =
              static_cast<int>((hall[channel] * (255 - cover) + front * cover + 127) / 255);
        }
      }
      const auto first = static_cast<std::size_t>(y * kWidth + x) * 3;
      EXPECT_EQ((Rgb{rgb[first], rgb[first + 1], rgb[first + 2]}), expected) << x << ", " << y;
    }
  }
  EXPECT_GT(mixed, 30);
}

// A picture with room for 12 by 20 beside its margins, for 3 by 4 of the map: 4 a step, in the
// middle.
TEST(CrowdDiscs, LieWhereTheirSeatsAreAndReachHalfWayToTheNext) {
  const std::vector<CrowdSeat> seats = {
      {{100, 50}, "A", false}, {{102, 50}, "A", false}, {{100, 53}, "Standing", true}};
  const std::vector<CrowdDisc> discs = discsOf(seats, 36, 44);
  ASSERT_EQ(discs.size(), 3);
  const double expected[3][3] = {{14, 16, 3.68}, {22, 16, 3.68}, {14, 28, 6}};
  for (std::size_t at = 0; at < 3; ++at) {
    EXPECT_DOUBLE_EQ(discs[at].x, expected[at][0]);
    EXPECT_DOUBLE_EQ(discs[at].y, expected[at][1]);
    EXPECT_DOUBLE_EQ(discs[at].radius, expected[at][2]);
    EXPECT_EQ(discs[at].isSquare, at == 2);
  }
  const std::vector<CrowdSeat> turned = {
      {{50, 100}, "A", false}, {{50, 102}, "A", false}, {{53, 100}, "A", false}};
  const std::vector<CrowdDisc> high = discsOf(turned, 44, 36);
  EXPECT_DOUBLE_EQ(high[1].x, 16);
  EXPECT_DOUBLE_EQ(high[1].y, 22);
  EXPECT_DOUBLE_EQ(high[2].radius, 3.68) << "no seat is drawn larger than most are";
}

TEST(CrowdDiscs, AreNeitherTooSmallToBeSeenNorTooLarge) {
  const std::vector<CrowdSeat> far = {
      {{0, 0}, "A", false}, {{1, 0}, "A", false}, {{5000, 0}, "A", false}};
  EXPECT_DOUBLE_EQ(discsOf(far, 36, 36)[0].radius, 0.6);
  const std::vector<CrowdSeat> alone = {{{3, 3}, "A", false}};
  EXPECT_DOUBLE_EQ(discsOf(alone, 1000, 1000)[0].radius, 14);
  EXPECT_DOUBLE_EQ(discsOf(alone, 44, 44)[0].radius, 9.2) << "half of all the room there is";
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
