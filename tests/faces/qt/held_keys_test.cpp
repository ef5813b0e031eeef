// SPDX-License-Identifier: Apache-2.0
// Keys that are held: those that act, act once, whatever they bring on the screen; those that move
// go on moving.
#include <string>

#include <gtest/gtest.h>

#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

StatusBenchSetup hall(bool isHeard = true) {
  StatusBenchSetup setup;
  setup.map = mapWithStanding();
  setup.isHeard = isHeard;
  setup.properties = "defaultVenueId: 7";
  return setup;
}

// Every step of the wizard has its choice, so that only the keys decide how far it goes.
struct HeldKey : testing::TestWithParam<Qt::Key> {
  static void storeSeat(StatusBench& bench) {
    bench.store({"A", "1", "1"}, {1, 1});
    bench.tick();
  }
};

TEST_P(HeldKey, OpensTheWizardAndNoMore) {
  StatusBench bench(hall());
  storeSeat(bench);
  bench.key(Qt::Key_Tab);
  ASSERT_EQ(bench.focused(), "seatSelectionButton");
  bench.hold(GetParam());
  ASSERT_TRUE(bench.isShown("seatSheetContent"));
  EXPECT_EQ(bench.selector().currentStep(), 0);
  EXPECT_FALSE(bench.selector().isDismissed());
}

TEST_P(HeldKey, OnTheNextButtonGoesOneStep) {
  StatusBench bench(hall());
  storeSeat(bench);
  bench.open();
  for (std::int64_t step = 1; step <= 2; ++step) {
    while (bench.focused() != "nextButton") bench.key(Qt::Key_Tab);
    bench.hold(GetParam());
    ASSERT_TRUE(bench.wizard().isPresented());
    EXPECT_EQ(bench.selector().currentStep(), step);
  }
}

INSTANTIATE_TEST_SUITE_P(, HeldKey, testing::Values(Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space),
                         [](const auto& test) {
                           return std::string(test.param == Qt::Key_Return  ? "Return"
                                              : test.param == Qt::Key_Enter ? "Enter"
                                                                            : "Space");
                         });

TEST(HeldReturn, OnThePickerGoesOneStepAndDoesNotConfirm) {
  StatusBench bench(hall());
  bench.store({"A", "1", "1"}, {1, 1});
  bench.tick();
  bench.open();
  for (std::int64_t step = 1; step <= 2; ++step) {
    ASSERT_EQ(bench.focused(), "pickerView");
    bench.hold(Qt::Key_Return);
    EXPECT_EQ(bench.selector().currentStep(), step);
  }
  EXPECT_FALSE(bench.selector().isDismissed());
}

TEST(HeldReturn, GoesToThePlanAndDoesNotConfirmThePlaceThere) {
  StatusBench bench(hall());
  bench.open();
  bench.key(Qt::Key_Down);
  bench.hold(Qt::Key_Return);
  ASSERT_TRUE(bench.isShown("standingDragArea"));
  EXPECT_FALSE(bench.selector().isDismissed());
  EXPECT_FALSE(bench.stored());
}

TEST(HeldReturn, InTheFilterGoesOneStep) {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(40, 40);
  StatusBench bench(setup);
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  bench.type("3");
  ASSERT_EQ(bench.focused(), "seatFilter");
  bench.hold(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 2);
  bench.type("2");
  ASSERT_EQ(bench.focused(), "seatFilter");
  bench.hold(Qt::Key_Down);
  EXPECT_GT(bench.item("pickerView")->property("currentIndex").toInt(), 5) << "a held arrow moves";
}

TEST(HeldReturn, BringsAnAlertThatStands) {
  StatusBench bench(hall(false));
  bench.open();
  bench.key(Qt::Key_Down);
  bench.hold(Qt::Key_Return);
  ASSERT_TRUE(bench.isShown("alertContent"));
  EXPECT_TRUE(bench.selector().presentedAlert());
  bench.key(Qt::Key_Return);
  EXPECT_FALSE(bench.selector().presentedAlert());
}

TEST(HeldEscape, EmptiesTheFilterAndLeavesTheWizard) {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(40, 40);
  StatusBench bench(setup);
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  bench.type("3");
  bench.hold(Qt::Key_Escape);
  EXPECT_EQ(bench.text("seatFilter"), "");
  EXPECT_TRUE(bench.wizard().isPresented());
}

TEST(HeldEscape, TakesTheAlertAwayAndLeavesTheWizard) {
  StatusBench bench(hall(false));
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  ASSERT_TRUE(bench.isShown("alertContent"));
  bench.hold(Qt::Key_Escape);
  EXPECT_FALSE(bench.selector().presentedAlert());
  EXPECT_TRUE(bench.wizard().isPresented());
}

}  // namespace
}  // namespace halvora
