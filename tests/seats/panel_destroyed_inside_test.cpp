// SPDX-License-Identifier: Apache-2.0
// A host that destroys panel, wizard or engine from within what they tell it.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"
#include "tests/seats/wizard_room.h"

namespace halvora {
namespace {

constexpr std::uint32_t kRedWord = 0xFFFF0000;

using Act = std::function<void(PanelBench&)>;

struct Case {
  const char* name;
  Act act;
};

void PrintTo(const Case& shown, std::ostream* out) { *out << shown.name; }

// Whatever makes the panel tell its face that something has changed.
const Case kCases[] = {
    {"refresh",
     [](PanelBench& bench) {
       bench.phone.defaults.setFromOutside("bluetoothStatus", std::string("other"));
       bench.tick();
     }},
    {"fields",
     [](PanelBench& bench) {
       StatusPanelFields fields = bench.panel().fields();
       fields.statusTextFontSize = 40;
       bench.panel().setFields(fields);
     }},
    {"layout",
     [](PanelBench& bench) {
       bench.summaryTextFrame = {1, 2, 3, 4};
       bench.fittingHeight = 300;
       bench.panel().viewDidLayoutSubviews(300);
     }},
    {"venue",
     [](PanelBench& bench) {
       bench.putMap(8, kBenchMap);
       bench.hearVenue(8);
       bench.tick();
       bench.settle();
     }},
    {"alert",
     [](PanelBench& bench) {
       bench.hearVenue(9);
       bench.turn([&] { bench.panel().openSeatSelector(); });
       if (bench.hasPanel()) bench.turn([&] { bench.panel().openSeatSelector(); });
     }},
    {"wizard",
     [](PanelBench& bench) {
       bench.panel().openSeatSelector();
       if (bench.hasPanel()) bench.panel().viewDidLayoutSubviews(200);
     }},
    {"join",
     [](PanelBench& bench) {
       bench.phone.bluetooth.setAuthorization(BluetoothAuthorization::notDetermined);
       bench.tick();
       if (bench.hasPanel()) bench.panel().initBluetoothPermission();
     }},
    {"precompute",
     [](PanelBench& bench) {
       bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
       bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
       bench.settle();
     }},
    {"version",
     [](PanelBench& bench) {
       bench.storeSeat(7, {"A", "1", "10"}, {3, 4});
       bench.panel().storage().setMapVersions({1, 2}, 7);
       bench.tick();
     }},
    {"ticket",
     [](PanelBench& bench) {
       bench.fittingHeight = 300;
       bench.panel().setSeat("A", "1", "10");
       bench.tick();
       bench.settle();
     }},
    {"show",
     [](PanelBench& bench) {
       bench.panel().openSeatSelector();
       if (bench.hasPanel()) bench.phone.application.dismissPresentedScreens();
     }},
};

class PanelDestroyedInside : public testing::TestWithParam<Case> {
 protected:
  /// Does it at the first time that the face is told or asked, at the second and so on, each on a
  /// panel of its own, until it is not told that often.
  static void atEach(std::function<void()> PanelBench::*told, const Act& act) {
    int acts = 0;
    for (int at = 1; at <= acts + 1; ++at) {
      PanelBench bench(inVenue7(benchMap(1, 1)));
      bench.putPixelMap(7, 1, {kRedWord});
      int seen = 0;
      bench.*told = [&] {
        if (++seen != at) return;
        ++acts;
        act(bench);
      };
      GetParam().act(bench);
      bench.phone.loop.runFor(milliseconds(2000));
    }
    EXPECT_GT(acts, 0);
  }
};

TEST_P(PanelDestroyedInside, AnyChangeThatItsFaceHearsOf) {
  atEach(&PanelBench::onChange, [](PanelBench& each) { each.destroyPanel(); });
}

TEST_P(PanelDestroyedInside, AnyMeasuring) {
  atEach(&PanelBench::onMeasure, [](PanelBench& each) { each.destroyPanel(); });
}

TEST_P(PanelDestroyedInside, AnyChangeTogetherWithTheEngine) {
  atEach(&PanelBench::onChange, [](PanelBench& each) {
    each.destroyEngine();
    each.destroyPanel();
  });
}

TEST_P(PanelDestroyedInside, AnyChangeButForItsEngine) {
  atEach(&PanelBench::onChange, [](PanelBench& each) { each.destroyEngine(); });
}

INSTANTIATE_TEST_SUITE_P(, PanelDestroyedInside, testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(PanelWithoutItsEngine, StandsStill) {
  PanelBench bench(inVenue7());
  bench.destroyEngine();
  const std::uint64_t changes = bench.panel().changes();
  bench.phone.defaults.setFromOutside("bluetoothStatus", std::string("other"));
  bench.phone.loop.runFor(milliseconds(2000));
  bench.panel().initBluetoothPermission();
  bench.panel().startSeatLUTPrecomputeForVenueId(7, {3, 4});
  bench.panel().applyMapVersionPolicyForVenueId(7);
  EXPECT_EQ(bench.panel().changes(), changes);
  EXPECT_FALSE(bench.panel().tables().isInProgress());
  // What is on screen can still be taken away.
  bench.panel().openSeatSelector();
  bench.phone.application.dismissPresentedScreens();
  EXPECT_EQ(bench.panel().presentedWizard(), nullptr);
}

// The engine's own reports of a precompute

class EngineDestroyedInPrecompute : public testing::Test {
 protected:
  EngineDestroyedInPrecompute() {
    bench.destroyPanel();
    for (int map = 1; map <= 3; ++map) bench.putPixelMap(7, map, {kRedWord});
  }
  void expectNothingMore() {
    bench.settle();
    bench.phone.loop.runFor(milliseconds(2000));
    EXPECT_EQ(told, "x");
  }

  PanelBench bench{inVenue7()};
  std::string told;
};

TEST_F(EngineDestroyedInPrecompute, InsideItsProgress) {
  bench.turn([this] {
    bench.engine().precomputePixelMapLUTsForVenueId(
        7, 3, 4,
        [this](int, int, const std::string&) {
          told += 'x';
          bench.destroyEngine();
        },
        [this](int, int) { told += 'c'; });
  });
  expectNothingMore();
}

TEST_F(EngineDestroyedInPrecompute, InsideItsCompletion) {
  bench.turn([this] {
    bench.engine().precomputePixelMapLUTsForVenueId(7, 3, 4, {}, [this](int, int) {
      told += 'x';
      bench.destroyEngine();
    });
  });
  expectNothingMore();
}

TEST_F(EngineDestroyedInPrecompute, InsideTheCompletionOfOneWithNothingToDo) {
  bench.turn([this] {
    for (int time = 0; time < 2; ++time) {
      bench.engine().precomputePixelMapLUTsForVenueId(7, -1, 4, {}, [this](int, int) {
        told += 'x';
        bench.destroyEngine();
      });
    }
  });
  expectNothingMore();
}

// The callback goes with the engine that it destroys: its own values must last until it is done.
TEST_F(EngineDestroyedInPrecompute, WithTheCallbacksOwnValues) {
  const std::string longEnoughToLiveOnTheHeap(100, 'v');
  bench.turn([&] {
    bench.engine().precomputePixelMapLUTsForVenueId(
        7, 3, 4, [this, longEnoughToLiveOnTheHeap](int, int, const std::string& mapId) {
          bench.destroyEngine();
          told = longEnoughToLiveOnTheHeap + mapId;
        });
  });
  bench.settle();
  EXPECT_EQ(told, longEnoughToLiveOnTheHeap + "1");
}

// The wizard

TEST(WizardDestroyedInside, ItsConfirmationWithTheMapItWasOf) {
  WizardRoom room(std::vector<SectionSpec>{{"A", {{"Row 1", {{"Seat 1", 3, 4}}}}}});
  std::string chosen;
  room.inputs.onSeatSelected = [&](const auto& section, const auto& row, const auto& seat) {
    room.inputs = {};
    room.destroyWizard();
    chosen = std::string(section.displayName()) + ", " + std::string(row.displayName()) + ", " +
             std::string(seat.displayName);
  };
  auto& wizard = room.load();
  for (int step = 0; step < 3; ++step) {
    wizard.pickerDidSelectRow(1);
    wizard.nextTapped();
  }
  EXPECT_EQ(chosen, "A, Row 1, Seat 1");
}

// Leaves through the panel that has presented it.
TEST(WizardDestroyedInside, TheChangeThatItsConfirmationMakes) {
  PanelBench bench(inVenue7());
  bench.putPixelMap(7, 1, {kRedWord});
  bench.panel().openSeatSelector();
  const auto selector = bench.panel().presentedWizard();
  ASSERT_NE(selector, nullptr);
  bench.onChange = [&] { bench.destroyPanel(); };
  for (int step = 0; step < 3; ++step) {
    selector->pickerDidSelectRow(step == 0 ? 2 : 1);
    selector->nextTapped();
  }
  EXPECT_FALSE(bench.hasPanel());
  EXPECT_TRUE(selector->isDismissed());
  bench.phone.loop.runFor(milliseconds(2000));
  EXPECT_TRUE(SeatStorage(bench.phone.defaults).hasValidSeatSelectionForVenueId(7));
}

}  // namespace
}  // namespace halvora
