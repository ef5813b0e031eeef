// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/venue_tables.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_video.h"

namespace halvora {
namespace {

using testing::ElementsAre;

constexpr SeatPosition kSeats[] = {{1, 2}, {3, 0}, {1, 2}};

struct VenueTablesRoom : testing::Test {
  VirtualVideoAssets videos;
  InlineWorkers workers;
  std::deque<std::vector<std::uint32_t>> rooms;
  VenueTables tables{kSeats};

  VenueTables::End build(const std::string& url, const std::function<bool()>& isCancelled = {}) {
    return tables.build({"1", url}, videos, {.workers = workers, .isCancelled = isCancelled},
                        [this](std::size_t words) { return std::span(rooms.emplace_back(words)); });
  }
};

TEST_F(VenueTablesRoom, HoldTheWordsOfEachSeat) {
  videos.put("a", VirtualVideo::ofPlaces(3, 4, 3));
  ASSERT_EQ(build("a"), VenueTables::End::built);
  const VenueTables::Block* block = tables.block("a");
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->frameCount, 3);
  EXPECT_THAT(block->row(tables.rowOf({3, 0}).value()),
              ElementsAre(0xFF000300, 0xFF010300, 0xFF020300));
  EXPECT_THAT(tables.find("a", {1, 2}).words(), ElementsAre(0xFF000102, 0xFF010102, 0xFF020102));
  EXPECT_THAT(tables.find("a", {3, 0}).words(), ElementsAre(0xFF000300, 0xFF010300, 0xFF020300));
}

TEST_F(VenueTablesRoom, SeatsThatShareAPixelShareATable) {
  EXPECT_EQ(tables.seatCount(), 2);
  EXPECT_EQ(tables.rowOf({1, 2}), 0U);
  EXPECT_EQ(tables.rowOf({3, 0}), 1U);
}

TEST(VenueTablesRows, AreFoundForEverySeatAndNoOther) {
  // Seats far apart, close together, and where the numbers end.
  std::vector<SeatPosition> seats = {{INT64_MIN, INT64_MAX}, {INT64_MAX, INT64_MIN}, {-1, -1}};
  for (std::int64_t at = 0; at < 3000; ++at) seats.push_back({at % 60 * 2, at / 60});
  const VenueTables tables(seats);
  EXPECT_EQ(tables.seatCount(), seats.size());
  for (std::size_t at = 0; at < seats.size(); ++at) EXPECT_EQ(tables.rowOf(seats[at]), at);
  for (std::int64_t at = 0; at < 3000; ++at) {
    EXPECT_EQ(tables.rowOf({at % 60 * 2 + 1, at / 60}), std::nullopt);
  }
  EXPECT_EQ(VenueTables({}).rowOf({0, 0}), std::nullopt);
}

TEST_F(VenueTablesRoom, KnowNothingOfOtherSeatsAndVideos) {
  videos.put("a", VirtualVideo::ofPlaces(3, 4, 3));
  ASSERT_EQ(build("a"), VenueTables::End::built);
  EXPECT_FALSE(tables.find("a", {2, 2}));
  EXPECT_FALSE(tables.find("b", {1, 2}));
  EXPECT_EQ(tables.block("b"), nullptr);
  EXPECT_EQ(tables.rowOf({2, 2}), std::nullopt);
}

TEST_F(VenueTablesRoom, KeepTheTablesOfSeveralMapsApart) {
  videos.put("a", VirtualVideo::ofWords({0xFF111111}));
  videos.put("b", VirtualVideo::ofWords({0xFF222222, 0xFF333333}));
  ASSERT_EQ(build("a"), VenueTables::End::built);
  ASSERT_EQ(build("b"), VenueTables::End::built);
  EXPECT_THAT(tables.find("a", {1, 2}).words(), ElementsAre(0xFF111111));
  EXPECT_THAT(tables.find("b", {1, 2}).words(), ElementsAre(0xFF222222, 0xFF333333));
}

TEST_F(VenueTablesRoom, SayWhyThereAreNone) {
  videos.put("a", VirtualVideo::ofPlaces(3, 4, 3));
  EXPECT_EQ(build("missing"), VenueTables::End::noVideo);
  EXPECT_EQ(build("a", [] { return true; }), VenueTables::End::cancelled);
  EXPECT_EQ(tables.build({"1", "a"}, videos, {.workers = workers},
                         [](std::size_t) { return std::span<std::uint32_t>(); }),
            VenueTables::End::noRoom);
  std::vector<std::uint32_t> tooSmall(2 * 3 - 1);
  EXPECT_EQ(tables.build({"1", "a"}, videos, {.workers = workers},
                         [&](std::size_t) { return std::span(tooSmall); }),
            VenueTables::End::noRoom);
  EXPECT_FALSE(tables.find("a", {1, 2}));
}

}  // namespace
}  // namespace halvora
