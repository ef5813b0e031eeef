// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_map_loader.h"

#include <memory>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/json/rapid_json_reader.h"
#include "platform/virtual/virtual_phone.h"
#include "tests/seats/seat_map_lines.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SeatMapLoaderTest : public testing::Test {
 protected:
  SeatMapLoaderTest() {
    phone_.mainBundle.folder = "/app";
    put(4, "four");
    put(5, "five");
  }

  void put(int venueId, const std::string& seat) {
    phone_.virtualFiles.put(pathOf(venueId), R"([{"rows": [{"seats": [")" + seat + R"("]}]}])");
  }
  static std::string pathOf(int venueId) {
    return "/app/HVAssets/Maps/Venue-" + std::to_string(venueId) + "/map.json";
  }
  /// A turn, the background work that was given before its end, and what follows from that.
  void settle() {
    phone_.loop.soon([] {});
    phone_.loop.runUntil(phone_.loop.now());
  }
  std::vector<std::string> lines() const { return linesOf(*loader_->seatMapSections()); }

  RapidJsonReader json_;
  VirtualPhone phone_{json_};
  int loads_ = 0;
  std::optional<SeatMapLoader> loader_{std::in_place, phone_.platform(), [this] { ++loads_; }};
};

TEST_F(SeatMapLoaderTest, BeginsWithoutAMap) {
  EXPECT_EQ(loader_->seatMapVenueId(), 0);
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 0);
  EXPECT_TRUE(loader_->seatMapSections()->isEmpty());
  EXPECT_THAT(phone_.queues.log.entries, ElementsAre("com.halvora.sdk.seatmap.parse"));
}

TEST_F(SeatMapLoaderTest, LoadsOffTheMainThread) {
  loader_->preloadSeatMapForVenueId(4);
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 4);
  EXPECT_EQ(loader_->seatMapVenueId(), 0);
  EXPECT_THAT(phone_.virtualFiles.reads.entries, IsEmpty());
  settle();
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 0);
  EXPECT_EQ(loader_->seatMapVenueId(), 4);
  EXPECT_THAT(lines(), ElementsAre("Section 1 | Row 1 | four 1,1"));
  EXPECT_EQ(loads_, 1);
}

TEST_F(SeatMapLoaderTest, DoesNotLoadAgainWhatIsLoadedOrOnItsWay) {
  loader_->preloadSeatMapForVenueId(4);
  loader_->preloadSeatMapForVenueId(4);
  settle();
  loader_->preloadSeatMapForVenueId(4);
  loader_->refreshSeatMapAvailability(4);
  settle();
  EXPECT_THAT(phone_.virtualFiles.reads.entries, ElementsAre(pathOf(4)));
  EXPECT_EQ(loads_, 1);
}

TEST_F(SeatMapLoaderTest, ALaterVenueSupersedesAnEarlierOne) {
  loader_->preloadSeatMapForVenueId(4);
  loader_->preloadSeatMapForVenueId(5);
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 5);
  settle();
  EXPECT_EQ(loader_->seatMapVenueId(), 5);
  EXPECT_THAT(lines(), ElementsAre("Section 1 | Row 1 | five 1,1"));
  EXPECT_EQ(loads_, 1);
}

TEST_F(SeatMapLoaderTest, ReturningToAVenueThatIsStillBeingLoadedTakesItsFirstResult) {
  loader_->preloadSeatMapForVenueId(4);
  loader_->preloadSeatMapForVenueId(5);
  loader_->preloadSeatMapForVenueId(4);
  settle();
  EXPECT_EQ(loader_->seatMapVenueId(), 4);
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 0);
  EXPECT_EQ(loads_, 1);
}

TEST_F(SeatMapLoaderTest, AnotherVenueReplacesTheMap) {
  loader_->preloadSeatMapForVenueId(4);
  settle();
  loader_->refreshSeatMapAvailability(5);
  EXPECT_EQ(loader_->seatMapVenueId(), 4);
  EXPECT_THAT(lines(), ElementsAre("Section 1 | Row 1 | four 1,1"));
  settle();
  EXPECT_THAT(lines(), ElementsAre("Section 1 | Row 1 | five 1,1"));
}

TEST_F(SeatMapLoaderTest, NoVenueForgetsTheMap) {
  for (const std::int64_t none : {0, -3}) {
    loader_->preloadSeatMapForVenueId(4);
    settle();
    ASSERT_EQ(loader_->seatMapVenueId(), 4);
    loader_->refreshSeatMapAvailability(none);
    EXPECT_EQ(loader_->seatMapVenueId(), 0);
    EXPECT_TRUE(loader_->seatMapSections()->isEmpty());
  }
}

TEST_F(SeatMapLoaderTest, NoVenueDropsALoadOnItsWay) {
  loader_->preloadSeatMapForVenueId(4);
  loader_->preloadSeatMapForVenueId(0);
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 0);
  settle();
  EXPECT_EQ(loader_->seatMapVenueId(), 0);
  EXPECT_TRUE(loader_->seatMapSections()->isEmpty());
  EXPECT_EQ(loads_, 0);
}

TEST_F(SeatMapLoaderTest, AMissingMapMarksTheVenueAsLoadedAndIsLookedForAgain) {
  loader_->preloadSeatMapForVenueId(6);
  settle();
  EXPECT_EQ(loader_->seatMapVenueId(), 6);
  EXPECT_EQ(loader_->seatMapLoadingVenueId(), 0);
  EXPECT_TRUE(loader_->seatMapSections()->isEmpty());
  EXPECT_EQ(loads_, 1);
  put(6, "six");
  loader_->preloadSeatMapForVenueId(6);
  settle();
  EXPECT_THAT(lines(), ElementsAre("Section 1 | Row 1 | six 1,1"));
  EXPECT_EQ(loads_, 2);
}

TEST_F(SeatMapLoaderTest, AMapThatIsHeldOutlivesTheNext) {
  loader_->preloadSeatMapForVenueId(4);
  settle();
  const std::shared_ptr<const SeatMap> held = loader_->seatMapSections();
  loader_->preloadSeatMapForVenueId(5);
  settle();
  EXPECT_THAT(linesOf(*held), ElementsAre("Section 1 | Row 1 | four 1,1"));
}

TEST_F(SeatMapLoaderTest, ALoaderThatIsGoneNeitherLoadsNorHears) {
  loader_->preloadSeatMapForVenueId(4);
  loader_.reset();
  settle();
  EXPECT_THAT(phone_.virtualFiles.reads.entries, IsEmpty());
  EXPECT_EQ(loads_, 0);
}

TEST_F(SeatMapLoaderTest, NamesAreInTheLanguageOfTheKit) {
  phone_.kitBundle.strings = {{"hv_seat_picker_fallback_row_format", "Reihe %ld"}};
  loader_->preloadSeatMapForVenueId(4);
  settle();
  EXPECT_THAT(lines(), ElementsAre("Section 1 | Reihe 1 | four 1,1"));
}

TEST_F(SeatMapLoaderTest, TheCallbackMayAskForAnotherMap) {
  loader_.emplace(phone_.platform(), [this] {
    ++loads_;
    loader_->preloadSeatMapForVenueId(5);
  });
  loader_->preloadSeatMapForVenueId(4);
  settle();
  EXPECT_EQ(loader_->seatMapVenueId(), 5);
  EXPECT_EQ(loads_, 2);
}

}  // namespace
}  // namespace halvora
