// SPDX-License-Identifier: Apache-2.0
// Tables that are not finished: whose build another one has ended, that a process took with it when
// it died, or of a seat that was chosen while another's were built.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

constexpr std::uint32_t kRedWord = 0xFFFF0000;
const SeatNames kSeatA{"A", "1", "10"};
const SeatNames kSeatB{"A", "2", "21"};
constexpr SeatPoint kPlaceA{3, 4};
constexpr SeatPoint kPlaceB{5, 6};

/// Another panel of the same engine, as a host may place two.
struct SecondPanel {
  explicit SecondPanel(PanelBench& bench) : panel(bench.engine(), bench.phone.platform()) {
    StatusPanelFields fields;
    fields.defaultVenueId = 7;
    panel.setFields(fields);
    bench.turn([this] { panel.viewDidLoad(); });
  }
  std::string dot() const {
    return PanelBench::textOf(panel.views().seatSelectionSummaryRow.seatLUTStatusDot);
  }
  PanelController panel;
};

struct UnfinishedTables : testing::Test {
  UnfinishedTables() {
    for (int map = 1; map <= 3; ++map) bench.putPixelMap(7, map, {kRedWord});
  }
  /// Chosen, but for what a tick does about it.
  void begin(const SeatNames& names, SeatPoint place) {
    bench.storeSeat(7, names, place);
    bench.panel().startSeatLUTPrecomputeForVenueId(7, place);
    EXPECT_TRUE(bench.panel().tables().isInProgress());
  }
  int opens() const { return bench.phone.virtualVideos.counts.opens; }

  PanelBench bench{inVenue7()};
};

// Another precompute of the same engine

TEST_F(UnfinishedTables, TheHostsOwnPrecomputeDoesNotLeaveThePanelInProgress) {
  begin(kSeatA, kPlaceA);
  int completions = 0;
  bench.engine().precomputePixelMapLUTsForVenueId(7, 9, 9, {}, [&](int, int) { ++completions; });
  EXPECT_EQ(bench.dotText(), "amber");
  // The host's comes to its end, and then what the panel had begun.
  bench.tick();
  EXPECT_EQ(completions, 1);
  bench.tick();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_EQ(bench.tables(), 6U);
}

TEST_F(UnfinishedTables, AnInvalidationDoesNotLeaveThePanelInProgress) {
  begin(kSeatA, kPlaceA);
  bench.engine().invalidatePixelMapSeatLUTCacheForVenueId(7);
  bench.tick();
  bench.tick();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_EQ(bench.tables(), 3U);
}

TEST_F(UnfinishedTables, ASecondPanelsChoiceDoesNotLeaveTheFirstInProgress) {
  SecondPanel second(bench);
  begin(kSeatA, kPlaceA);
  bench.storeSeat(7, kSeatB, kPlaceB);
  second.panel.startSeatLUTPrecomputeForVenueId(7, kPlaceB);
  bench.tick();
  bench.tick();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_FALSE(second.panel.tables().isInProgress());
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_EQ(second.dot(), "green");
  EXPECT_TRUE(bench.isStoredReady(7));
  bench.tick();
  EXPECT_EQ(bench.dotText() + " " + second.dot(), "green green") << "and none builds again";
}

TEST_F(UnfinishedTables, ASecondPanelLetsTheFirstFinish) {
  SecondPanel second(bench);
  begin(kSeatA, kPlaceA);
  second.panel.updateStatus();
  EXPECT_FALSE(second.panel.tables().isInProgress());
  EXPECT_EQ(second.dot(), "amber");
  bench.settle();
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "green");
  bench.tick();
  EXPECT_EQ(second.dot(), "green");
}

// Another seat

TEST_F(UnfinishedTables, ASeatChosenMeanwhileIsNotCalledReady) {
  begin(kSeatA, kPlaceA);
  std::vector<std::string> seen;
  bench.phone.loop.onTurnEnded([&] {
    seen.push_back((bench.isStoredReady(7) ? "ready " : "") + std::to_string(bench.tables()));
  });
  bench.storeSeat(7, kSeatB, kPlaceB);
  bench.panel().startSeatLUTPrecomputeForVenueId(7, kPlaceB);
  bench.settle();
  ASSERT_FALSE(seen.empty());
  for (const std::string& state : seen) EXPECT_TRUE(state == "ready 6" || state[0] != 'r') << state;
  EXPECT_EQ(seen.back(), "ready 6") << "as soon as its own tables are there";
  EXPECT_EQ(bench.dotText(), "green");
  EXPECT_FALSE(bench.panel().tables().isInProgress());
}

TEST_F(UnfinishedTables, ASeatThatIsChosenInTheWizardMeanwhileIsBuiltInItsTurn) {
  begin(kSeatA, kPlaceA);
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  for (const std::int64_t pick : {2, 2, 2}) {
    selector->pickerDidSelectRow(pick);
    selector->nextTapped();
  }
  EXPECT_EQ(bench.storedSeat(7), kPlaceB);
  bench.settle();
  EXPECT_EQ(bench.tables(), 6U);
  EXPECT_TRUE(bench.isStoredReady(7));
}

TEST_F(UnfinishedTables, TheSameSeatChosenAgainIsReadyWhenItsTablesAre) {
  begin(kSeatA, kPlaceA);
  begin(kSeatA, kPlaceA);
  bench.settle();
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.tables(), 3U);
}

// Another process

/// Venue 7 as a process has left it that died while the tables of seat A were built.
PanelBenchSetup afterADeath(int maps) {
  PanelBenchSetup setup = inVenue7();
  setup.prepare = [maps, prepare = setup.prepare](VirtualPhone& phone) {
    prepare(phone);
    SeatStorage storage(phone.defaults);
    storage.persistSeatSelectionForVenueId(7, kSeatA, kPlaceA);
    storage.setPersistedSeatLUTReady(false, 7);
    for (int map = 1; map <= maps; ++map) {
      const std::string path = "/host/HVAssets/Maps/Venue-7/" + std::to_string(map) + "/video.mp4";
      phone.virtualFiles.put(path, "video");
      phone.virtualVideos.put(path, VirtualVideo::ofWords({kRedWord}));
    }
  };
  return setup;
}

TEST(TablesOfADeadProcess, AreBuiltAtTheNextStart) {
  PanelBench bench(afterADeath(3));
  bench.settle();
  EXPECT_EQ(bench.tables(), 3U);
  EXPECT_TRUE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "green");
}

TEST(TablesOfADeadProcess, ThatAreAllThereAreOnlyLookedAt) {
  PanelBench bench(afterADeath(3));
  bench.settle();
  ASSERT_EQ(bench.tables(), 3U);
  bench.panel().storage().setPersistedSeatLUTReady(false, 7);
  const int opens = bench.phone.virtualVideos.counts.opens;
  // The next start, on the same files.
  HalvoraViewController engine(bench.phone.platform());
  engine.viewDidLoad();
  bench.destroyPanel();
  PanelController panel(engine, bench.phone.platform());
  StatusPanelFields fields;
  fields.defaultVenueId = 7;
  panel.setFields(fields);
  bench.turn([&] { panel.viewDidLoad(); });
  EXPECT_TRUE(SeatStorage(bench.phone.defaults).persistedSeatLUTReadyForVenueId(7));
  EXPECT_EQ(bench.phone.virtualVideos.counts.opens, opens);
}

TEST(TablesOfADeadProcess, OfAVenueWithoutMapsAreAskedForOnce) {
  PanelBench bench(afterADeath(0));
  bench.settle();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  EXPECT_FALSE(bench.isStoredReady(7));
  EXPECT_EQ(bench.dotText(), "amber");
  const std::uint64_t changes = bench.panel().changes();
  bench.phone.loop.runFor(milliseconds(5000));
  EXPECT_EQ(bench.panel().changes(), changes);
}

TEST(TablesOfADeadProcess, WaitForTheMap) {
  PanelBenchSetup setup = afterADeath(3);
  setup.isViewLoaded = false;
  PanelBench bench(std::move(setup));
  // Before the map is read, nobody knows whether the seat still is one.
  bench.panel().viewDidLoad();
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  bench.settle();
  EXPECT_EQ(bench.dotText(), "green");
}

TEST(TablesOfADeadProcess, OfASeatThatANewMapHasDiscardedAreNotBuilt) {
  PanelBenchSetup setup = afterADeath(3);
  setup.prepare = [prepare = setup.prepare](VirtualPhone& phone) {
    prepare(phone);
    SeatStorage(phone.defaults).setMapVersions({9, 1}, 7);
  };
  PanelBench bench(std::move(setup));
  bench.phone.loop.runFor(milliseconds(2000));
  EXPECT_EQ(bench.tables(), 0U);
  EXPECT_FALSE(bench.storedSeat(7));
  EXPECT_EQ(bench.dotText(), "hidden");
}

TEST(TablesOfADeadProcess, WereNeverBegunWhereNothingIsStoredOfThem) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.storeSeat(7, kSeatA, kPlaceA);
  bench.phone.loop.runFor(milliseconds(2000));
  EXPECT_EQ(bench.tables(), 0U);
  EXPECT_EQ(bench.dotText(), "amber");
}

}  // namespace
}  // namespace halvora
