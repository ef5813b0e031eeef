// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_storage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

const SeatNames kNames{"Block A", "Row 3", "Seat 12"};

DefaultsDictionary record(DefaultsValue xPos, DefaultsValue yPos) {
  return {{"section", std::string("Block A")},
          {"row", std::string("Row 3")},
          {"seat", std::string("Seat 12")},
          {"xPos", std::move(xPos)},
          {"yPos", std::move(yPos)}};
}

class SeatStorageTest : public testing::Test {
 protected:
  void store(std::string_view key, DefaultsValue value) {
    defaults.setFromOutside(key, std::move(value));
  }
  void storeRecord(DefaultsValue value, const std::string& venue = "7") {
    store("seatSelectionByVenue", DefaultsDictionary{{venue, std::move(value)}});
  }
  const DefaultsValue* stored(std::string_view key) const { return defaults.find(key); }
  /// The text under a flat key; "-" for none.
  std::string flat(std::string_view key) const { return textForKey(defaults, key).value_or("-"); }
  std::string flatKeys() const {
    return flat("xPos") + "," + flat("yPos") + "," + flat("selectedSection") + "," +
           flat("selectedRow") + "," + flat("selectedSeat");
  }
  /// What is written by the way counts as synchronised.
  bool isSynchronised() const { return defaults.synchronisations > 0; }

  VirtualDefaults defaults;
  SeatStorage storage{defaults};
};

TEST_F(SeatStorageTest, KeysAreTheTopLevelNames) {
  EXPECT_EQ(SeatStorage::seatSelectionStorageKey, "seatSelectionByVenue");
  EXPECT_EQ(SeatStorage::seatVersionStorageKey, "seatVersionByVenue");
  EXPECT_EQ(SeatStorage::mapAssetsVersionStorageKey, "mapAssetsVersionByVenue");
  EXPECT_EQ(SeatStorage::seatLUTReadyStorageKey, "seatLUTReadyByVenue");
  EXPECT_EQ(SeatStorage::seatSelectionVenueKeyForVenueId(12), "12");
  EXPECT_EQ(SeatStorage::seatSelectionVenueKeyForVenueId(-3), "-3");
}

TEST_F(SeatStorageTest, PersistsARecordOfFiveEntries) {
  storage.persistSeatSelectionForVenueId(7, kNames, {40, 5});
  EXPECT_EQ(*stored("seatSelectionByVenue"),
            DefaultsValue(DefaultsDictionary{{"7", record(std::int64_t{40}, std::int64_t{5})}}));
  ASSERT_NE(storage.seatSelectionForVenueId(7), nullptr);
  EXPECT_EQ(*storage.seatSelectionForVenueId(7), record(std::int64_t{40}, std::int64_t{5}));
  EXPECT_TRUE(isSynchronised());
}

TEST_F(SeatStorageTest, MissingLabelsArePersistedAsEmptyTexts) {
  storage.persistSeatSelectionForVenueId(7, {}, {1, 2});
  const SeatNames names = seatNamesOf(*storage.seatSelectionForVenueId(7));
  EXPECT_EQ(names.section + names.row + names.seat, "");
  EXPECT_EQ(storage.seatSelectionForVenueId(7)->size(), 5U);
}

TEST_F(SeatStorageTest, KeepsTheOtherVenuesRecords) {
  storage.persistSeatSelectionForVenueId(7, kNames, {1, 1});
  storage.persistSeatSelectionForVenueId(8, {"B", "1", "2"}, {2, 2});
  storage.persistSeatSelectionForVenueId(7, {"C", "1", "2"}, {3, 3});
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), (SeatPoint{3, 3}));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(8), (SeatPoint{2, 2}));
  const auto* venues = std::get_if<DefaultsDictionary>(&stored("seatSelectionByVenue")->storage);
  EXPECT_EQ(venues->size(), 2U);
}

TEST_F(SeatStorageTest, AStoredValueThatIsNoDictionaryIsReplaced) {
  store("seatSelectionByVenue", std::string("gone"));
  EXPECT_EQ(storage.seatSelectionForVenueId(7), nullptr);
  storage.persistSeatSelectionForVenueId(7, kNames, {1, 2});
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), (SeatPoint{1, 2}));
}

TEST_F(SeatStorageTest, AnEntryThatIsNoDictionaryIsNoRecord) {
  storeRecord(std::string("A 3 12"));
  EXPECT_EQ(storage.seatSelectionForVenueId(7), nullptr);
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt);
}

TEST_F(SeatStorageTest, TheFirstVenueHasOne) {
  storage.persistSeatSelectionForVenueId(1, kNames, {40, 5});
  EXPECT_TRUE(storage.hasValidSeatSelectionForVenueId(1));
}

TEST_F(SeatStorageTest, AVenueBelow1HasNoRecordAndGetsNone) {
  storage.persistSeatSelectionForVenueId(0, kNames, {1, 2});
  storage.persistSeatSelectionForVenueId(-1, kNames, {1, 2});
  EXPECT_EQ(stored("seatSelectionByVenue"), nullptr);
  storeRecord(record(std::int64_t{1}, std::int64_t{2}), "0");
  EXPECT_EQ(storage.seatSelectionForVenueId(0), nullptr);
}

TEST_F(SeatStorageTest, AValidSeatHasThreeLabelsAndAPlace) {
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt);
  storeRecord(record(std::int64_t{0}, std::int64_t{0}));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), (SeatPoint{0, 0}));
  storeRecord(record(std::int64_t{-1}, std::int64_t{0}));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt);
  storeRecord(record(std::int64_t{0}, std::int64_t{-1}));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt);
  for (const char* label : {"section", "row", "seat"}) {
    for (const DefaultsValue& value : {DefaultsValue(std::string()), DefaultsValue(std::int64_t{5}),
                                       DefaultsValue(DefaultsDictionary{})}) {
      DefaultsDictionary broken = record(std::int64_t{1}, std::int64_t{2});
      for (DefaultsMember& member : broken) {
        if (member.key == label) member.value = value;
      }
      storeRecord(broken);
      EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt) << label;
    }
  }
}

TEST_F(SeatStorageTest, AValidSeatsPlaceMayBeAnythingWithAnIntegerValue) {
  storeRecord(record(std::string("12"), 3.9));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), (SeatPoint{12, 3}));
  storeRecord(record(true, std::string("row")));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), (SeatPoint{1, 0}));
  storeRecord(record(DefaultsDictionary{}, std::int64_t{3}));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt);
  storeRecord(record(std::int64_t{3}, Date{5}));
  EXPECT_EQ(storage.hasValidSeatSelectionForVenueId(7), std::nullopt);
}

TEST_F(SeatStorageTest, ClearingRemovesTheRecordAndTheFlatKeys) {
  storage.persistSeatSelectionForVenueId(7, kNames, {40, 5});
  storage.persistSeatSelectionForVenueId(8, kNames, {2, 2});
  storage.setSeatDefaults(kNames, {40, 5});
  storage.clearSeatSelectionForVenueId(7);
  EXPECT_EQ(storage.seatSelectionForVenueId(7), nullptr);
  EXPECT_NE(storage.seatSelectionForVenueId(8), nullptr);
  EXPECT_EQ(flatKeys(), "0,0,-,-,-");
}

TEST_F(SeatStorageTest, ClearingAVenueBelow1DoesNothing) {
  storage.setSeatDefaults(kNames, {40, 5});
  storage.clearSeatSelectionForVenueId(0);
  EXPECT_EQ(flatKeys(), "40,5,Block A,Row 3,Seat 12");
}

TEST_F(SeatStorageTest, ClearingLeavesAStrangeValueAlone) {
  store("seatSelectionByVenue", std::string("strange"));
  storage.clearSeatSelectionForVenueId(7);
  EXPECT_EQ(*stored("seatSelectionByVenue"), DefaultsValue(std::string("strange")));
  EXPECT_EQ(flatKeys(), "0,0,-,-,-");
}

TEST_F(SeatStorageTest, SyncingCopiesTheRecordToTheFlatKeys) {
  storage.persistSeatSelectionForVenueId(7, kNames, {40, 5});
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_EQ(flatKeys(), "40,5,Block A,Row 3,Seat 12");
  EXPECT_EQ(*stored("xPos"), DefaultsValue(std::string("40")));
}

TEST_F(SeatStorageTest, SyncingWithoutARecordMeansNoSeat) {
  storage.setSeatDefaults(kNames, {40, 5});
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_EQ(flatKeys(), "0,0,-,-,-");
  storage.setSeatDefaults(kNames, {40, 5});
  storage.syncSeatDefaultsForVenueId(0);
  EXPECT_EQ(flatKeys(), "0,0,-,-,-");
}

TEST_F(SeatStorageTest, ARecordWithoutXPosSyncsItAsMinus1) {
  storeRecord(DefaultsDictionary{{"section", std::string("A")}, {"yPos", std::int64_t{4}}});
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_EQ(flatKeys(), "-1,4,A,-,-");
}

TEST_F(SeatStorageTest, ARecordWithoutYPosSyncsItAsMinus1) {
  storeRecord(DefaultsDictionary{{"section", std::string("A")}, {"xPos", std::int64_t{-4}}});
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_EQ(flatKeys(), "-4,-1,A,-,-");
}

TEST_F(SeatStorageTest, SyncingLeavesANumberThatReadsTheSame) {
  storage.persistSeatSelectionForVenueId(7, kNames, {40, 5});
  store("xPos", std::int64_t{40});
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_EQ(*stored("xPos"), DefaultsValue(std::int64_t{40}));
  EXPECT_EQ(flatKeys(), "40,5,Block A,Row 3,Seat 12");
}

TEST_F(SeatStorageTest, SyncingTakesNumbersAsPlacesAndTextsAsLabelsAndNothingElse) {
  storeRecord(DefaultsDictionary{{"section", std::int64_t{5}},
                                 {"row", std::string()},
                                 {"seat", std::string("12")},
                                 {"xPos", std::string("40")},
                                 {"yPos", 7.9}});
  store("selectedSection", std::string("Old"));
  store("selectedRow", std::string("Old"));
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_EQ(flatKeys(), "-1,7,-,-,12");
}

TEST_F(SeatStorageTest, SyncingWritesOnlyWhatDiffers) {
  storage.persistSeatSelectionForVenueId(7, kNames, {40, 5});
  storage.syncSeatDefaultsForVenueId(7);
  defaults.log.drain();
  const std::uint64_t synchronisations = defaults.synchronisations;
  storage.syncSeatDefaultsForVenueId(7);
  EXPECT_TRUE(defaults.log.entries.empty());
  EXPECT_EQ(defaults.synchronisations, synchronisations);
  store("yPos", std::string("6"));
  storage.syncSeatDefaultsForVenueId(7);
  ASSERT_EQ(defaults.log.entries.size(), 1U);
  EXPECT_EQ(defaults.log.entries[0].key, "yPos");
  EXPECT_EQ(defaults.synchronisations, synchronisations + 1);
}

TEST_F(SeatStorageTest, TheReadyFlagIsStoredByVenue) {
  EXPECT_FALSE(storage.persistedSeatLUTReadyForVenueId(7));
  storage.setPersistedSeatLUTReady(true, 7);
  storage.setPersistedSeatLUTReady(false, 8);
  EXPECT_TRUE(storage.persistedSeatLUTReadyForVenueId(7));
  EXPECT_FALSE(storage.persistedSeatLUTReadyForVenueId(8));
  EXPECT_EQ(*stored("seatLUTReadyByVenue"),
            DefaultsValue(DefaultsDictionary{{"7", true}, {"8", false}}));
  storage.setPersistedSeatLUTReady(true, 0);
  EXPECT_FALSE(storage.persistedSeatLUTReadyForVenueId(0));
}

TEST_F(SeatStorageTest, AWriteOfWhatIsThereIsNone) {
  for (int round = 0; round < 2; ++round) {
    storage.setPersistedSeatLUTReady(true, 7);
    storage.setPersistedSeatLUTReady(false, 8);
    storage.persistSeatSelectionForVenueId(7, kNames, {1, 2});
    storage.persistSeatSelectionForVenueId(8, kNames, {3, 4});
    EXPECT_EQ(defaults.changes, 4U) << round;
  }
}

TEST_F(SeatStorageTest, AReadyFlagMayBeAnyNumberButNothingElse) {
  const auto readyAs = [this](DefaultsValue value) {
    store("seatLUTReadyByVenue", DefaultsDictionary{{"7", std::move(value)}});
    return storage.persistedSeatLUTReadyForVenueId(7);
  };
  EXPECT_TRUE(readyAs(std::int64_t{1}));
  EXPECT_TRUE(readyAs(0.5));
  EXPECT_FALSE(readyAs(std::int64_t{0}));
  EXPECT_FALSE(readyAs(0.0));
  EXPECT_FALSE(readyAs(std::string("1")));
  EXPECT_FALSE(readyAs(DefaultsDictionary{}));
  store("seatLUTReadyByVenue", true);
  EXPECT_FALSE(storage.persistedSeatLUTReadyForVenueId(7));
}

TEST_F(SeatStorageTest, VersionsAreStoredByVenue) {
  EXPECT_EQ(storage.mapVersionsForVenueId(7).seatVersion, std::nullopt);
  storage.setMapVersions({3, 2}, 7);
  storage.setMapVersions({1, 1}, 8);
  EXPECT_EQ(*stored("seatVersionByVenue"),
            DefaultsValue(DefaultsDictionary{{"7", std::int64_t{3}}, {"8", std::int64_t{1}}}));
  EXPECT_EQ(*stored("mapAssetsVersionByVenue"),
            DefaultsValue(DefaultsDictionary{{"7", std::int64_t{2}}, {"8", std::int64_t{1}}}));
  EXPECT_EQ(storage.mapVersionsForVenueId(7).seatVersion, 3);
  EXPECT_EQ(storage.mapVersionsForVenueId(7).mapAssetsVersion, 2);
}

TEST_F(SeatStorageTest, AVersionThatIsNoNumberCountsAsNeverStored) {
  store("seatVersionByVenue", DefaultsDictionary{{"7", std::string("3")}});
  store("mapAssetsVersionByVenue", DefaultsDictionary{{"7", 2.0}});
  EXPECT_EQ(storage.mapVersionsForVenueId(7).seatVersion, std::nullopt);
  EXPECT_EQ(storage.mapVersionsForVenueId(7).mapAssetsVersion, 2);
}

TEST_F(SeatStorageTest, EveryWriteIsSynchronised) {
  const auto synchronises = [this](auto write) {
    const std::uint64_t before = defaults.synchronisations;
    const std::uint64_t changes = defaults.changes;
    write();
    return defaults.changes > changes && defaults.synchronisations > before;
  };
  EXPECT_TRUE(synchronises([&] { storage.setSeatDefaults(kNames, {1, 2}); }));
  EXPECT_TRUE(synchronises([&] { storage.persistSeatSelectionForVenueId(7, kNames, {1, 2}); }));
  EXPECT_TRUE(synchronises([&] { storage.setPersistedSeatLUTReady(true, 7); }));
  EXPECT_TRUE(synchronises([&] { storage.setMapVersions({1, 1}, 7); }));
  EXPECT_TRUE(synchronises([&] { storage.clearSeatSelectionForVenueId(7); }));
}

TEST_F(SeatStorageTest, ARemovalAloneIsSynchronisedToo) {
  storage.setSeatDefaults(kNames, {0, 0});
  defaults.log.drain();
  const std::uint64_t before = defaults.synchronisations;
  storage.setSeatDefaults({}, {0, 0});
  EXPECT_EQ(flatKeys(), "0,0,-,-,-");
  EXPECT_EQ(defaults.log.entries.size(), 3U);
  EXPECT_EQ(defaults.synchronisations, before + 1);
  storage.setSeatDefaults({}, {0, 0});
  EXPECT_EQ(defaults.log.entries.size(), 3U);
  EXPECT_EQ(defaults.synchronisations, before + 1) << "nothing is left to remove";
}

}  // namespace
}  // namespace halvora
