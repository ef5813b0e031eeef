// SPDX-License-Identifier: Apache-2.0
// What a new version of a venue's seat map, or of its pixel maps, does to the seat and its tables.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

constexpr std::uint32_t kRedWord = 0xFFFF0000;

/// A panel in venue 7 with a seat whose tables were built on a map of versions 3 and 2.
class MapVersionPolicyTest : public testing::Test {
 protected:
  MapVersionPolicyTest() {
    bench.putPixelMap(7, 1, {kRedWord});
    bench.choose(2, 1, 1);
    EXPECT_EQ(bench.dotText(), "green");
    EXPECT_EQ(bench.tables(), 1U);
  }
  /// As a new release of the application brings it: read at the next start.
  void update(const std::string& document) {
    bench.putMap(7, document);
    bench.turn([this] {
      bench.panel().preloadSeatMapForVenueId(0);
      bench.panel().preloadSeatMapForVenueId(7);
    });
  }
  std::string storedVersions() {
    const StoredMapVersions stored = bench.panel().storage().mapVersionsForVenueId(7);
    const auto text = [](const std::optional<std::int64_t>& version) {
      return version ? std::to_string(*version) : std::string("-");
    };
    return text(stored.seatVersion) + " " + text(stored.mapAssetsVersion);
  }

  PanelBench bench{inVenue7(benchMap(3, 2))};
};

TEST_F(MapVersionPolicyTest, AFirstRunStoresTheVersionsAndKeepsEverything) {
  EXPECT_EQ(storedVersions(), "3 2");
  EXPECT_TRUE(bench.storedSeat(7));
}

TEST_F(MapVersionPolicyTest, TheSameVersionsChangeNothing) {
  const std::uint64_t writes = bench.phone.defaults.changes;
  update(benchMap(3, 2));
  EXPECT_EQ(bench.phone.defaults.changes, writes);
  EXPECT_EQ(bench.dotText(), "green");
}

TEST_F(MapVersionPolicyTest, ANewSeatMapDiscardsSeatFlatKeysAndTables) {
  bench.storeSeat(8, {"A", "1", "10"}, {3, 4});
  update(benchMap(4, 2));
  EXPECT_EQ(bench.storedSeat(7), std::nullopt);
  EXPECT_EQ(bench.panel().storage().seatSelectionForVenueId(7), nullptr);
  EXPECT_NE(bench.storedSeat(8), std::nullopt);
  EXPECT_EQ(bench.flat("xPos"), "0");
  EXPECT_EQ(bench.flat("yPos"), "0");
  EXPECT_EQ(bench.flat("selectedSection"), "-");
  EXPECT_EQ(bench.flat("selectedRow"), "-");
  EXPECT_EQ(bench.flat("selectedSeat"), "-");
  EXPECT_EQ(bench.tables(), 0U);
  EXPECT_FALSE(bench.isStoredReady(7));
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_EQ(storedVersions(), "4 2");
  EXPECT_EQ(bench.dotText(), "hidden");
  EXPECT_EQ(bench.summary(), "No seat selected");
}

TEST_F(MapVersionPolicyTest, ADiscardedSeatNoLongerReachesTheFlatKeys) {
  bench.phone.defaults.setFromOutside("xPos", std::string("99"));
  bench.phone.defaults.log.drain();
  update(benchMap(4, 2));
  std::vector<DefaultsValue> places;
  for (const auto& write : bench.phone.defaults.log.entries) {
    if (write.key == "xPos") places.push_back(write.value.value_or(DefaultsValue()));
  }
  EXPECT_EQ(places, std::vector<DefaultsValue>{std::string("0")});
}

TEST_F(MapVersionPolicyTest, WithANewSeatMapTheAssetsAreNotCompared) {
  update(benchMap(2, 9));
  EXPECT_EQ(bench.storedSeat(7), std::nullopt);
  EXPECT_EQ(bench.tables(), 0U);
  EXPECT_EQ(storedVersions(), "2 9");
}

TEST_F(MapVersionPolicyTest, NewAssetsRebuildTheTablesForTheSameSeat) {
  const int opens = bench.phone.virtualVideos.counts.opens;
  std::vector<bool> ready;
  bench.phone.loop.onTurnEnded([&] { ready.push_back(bench.isStoredReady(7)); });
  update(benchMap(3, 3));
  EXPECT_EQ(bench.storedSeat(7), (SeatPoint{3, 4}));
  EXPECT_EQ(bench.tables(), 1U);
  EXPECT_GT(bench.phone.virtualVideos.counts.opens, opens) << "built anew, not found";
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_EQ(storedVersions(), "3 3");
  // Yes until the map is read, no while the tables are built, yes when they are complete.
  ASSERT_GE(ready.size(), 3U);
  EXPECT_TRUE(ready.front());
  EXPECT_NE(std::find(ready.begin(), ready.end(), false), ready.end());
  EXPECT_TRUE(ready.back());
}

TEST_F(MapVersionPolicyTest, ALowerVersionIsANewOneToo) {
  const int opens = bench.phone.virtualVideos.counts.opens;
  update(benchMap(3, 1));
  EXPECT_GT(bench.phone.virtualVideos.counts.opens, opens);
  EXPECT_EQ(storedVersions(), "3 1");
  update(benchMap(1, 1));
  EXPECT_EQ(bench.storedSeat(7), std::nullopt);
  EXPECT_EQ(storedVersions(), "1 1");
}

TEST_F(MapVersionPolicyTest, EachStoredVersionCountsByItself) {
  const int opens = bench.phone.virtualVideos.counts.opens;
  bench.phone.defaults.remove("seatVersionByVenue");
  update(benchMap(9, 3));
  EXPECT_EQ(bench.storedSeat(7), (SeatPoint{3, 4}));
  EXPECT_GT(bench.phone.virtualVideos.counts.opens, opens);
  EXPECT_EQ(storedVersions(), "9 3");
  bench.phone.defaults.remove("mapAssetsVersionByVenue");
  update(benchMap(8, 3));
  EXPECT_EQ(bench.storedSeat(7), std::nullopt);
  EXPECT_EQ(storedVersions(), "8 3");
}

TEST_F(MapVersionPolicyTest, NewAssetsWithoutASeatRebuildNothing) {
  bench.panel().storage().clearSeatSelectionForVenueId(7);
  update(benchMap(3, 3));
  EXPECT_EQ(bench.tables(), 0U);
  EXPECT_FALSE(bench.isStoredReady(7));
  EXPECT_FALSE(bench.panel().tables().isInProgress());
}

TEST_F(MapVersionPolicyTest, AMapWithoutVersionsCountsAsVersion1ForBoth) {
  bench.panel().storage().setMapVersions({1, 1}, 7);
  update(kBenchMap);
  EXPECT_EQ(storedVersions(), "1 1");
  EXPECT_TRUE(bench.storedSeat(7));
  EXPECT_EQ(bench.dotText(), "green");
}

TEST_F(MapVersionPolicyTest, AVersionThatWasNeverStoredTriggersNothing) {
  bench.phone.defaults.remove("seatVersionByVenue");
  bench.phone.defaults.remove("mapAssetsVersionByVenue");
  update(benchMap(9, 9));
  EXPECT_TRUE(bench.storedSeat(7));
  EXPECT_EQ(bench.tables(), 1U);
  EXPECT_EQ(storedVersions(), "9 9");
}

TEST_F(MapVersionPolicyTest, WithoutADocumentNothingIsDone) {
  for (const char* document : {"", "[]", "{"}) {
    update(document);
    EXPECT_TRUE(bench.storedSeat(7));
    EXPECT_EQ(bench.tables(), 1U);
    EXPECT_EQ(storedVersions(), "3 2");
  }
}

TEST_F(MapVersionPolicyTest, ADocumentWithoutSectionsStillHasVersions) {
  update(R"({"seatVersion": 4})");
  EXPECT_EQ(bench.storedSeat(7), std::nullopt);
  EXPECT_EQ(storedVersions(), "4 1");
}

TEST_F(MapVersionPolicyTest, NewAssetsOfOneVenueEndThePrecomputeOfAnother) {
  bench.putMap(8, benchMap(1, 1));
  bench.putPixelMap(8, 1, {kRedWord});
  bench.storeSeat(8, {"A", "1", "10"}, {3, 4});
  bench.panel().storage().setMapVersions({1, 9}, 8);
  // Under way for venue 7 when venue 8's map is read.
  bench.hearVenue(8);
  bench.panel().updateStatus();
  bench.panel().hideSeatLUTPrecomputeProgress();
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
  bench.settle();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_TRUE(bench.isStoredReady(8));
  EXPECT_EQ(bench.dotText(), "green");
}

}  // namespace
}  // namespace halvora
