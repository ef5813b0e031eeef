// SPDX-License-Identifier: Apache-2.0
// What the user has asked the system for: high contrast and stillness come by themselves, a host
// that decides otherwise goes before, and in either palette everything stands out.
#include <QQuickItem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/faces/qt/contrast.h"
#include "tests/faces/qt/screen_judge.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

StatusBenchSetup following(SystemWishes& wishes) {
  StatusBenchSetup setup;
  setup.wishes = &wishes;
  setup.isStill = false;
  return setup;
}

TEST(HighContrast, TheSystemsWishesAreFollowed) {
  SystemWishes wishes;
  wishes.set({.highContrast = true});
  StatusBench bench(following(wishes));
  EXPECT_TRUE(bench.view().property("highContrast").toBool());
  EXPECT_FALSE(bench.view().property("reducedMotion").toBool());
  EXPECT_EQ(bench.face().seatSelectionButton().background(), QColor(Qt::white));
  EXPECT_EQ(bench.wizard().background(), QColor(Qt::black));

  wishes.set({.highContrast = true, .reducedMotion = true, .scheme = ColourScheme::light});
  EXPECT_TRUE(bench.view().property("reducedMotion").toBool());
  EXPECT_EQ(bench.face().seatSelectionButton().background(), QColor(Qt::black));
  EXPECT_EQ(bench.wizard().background(), QColor(Qt::white));

  wishes.set({});
  EXPECT_FALSE(bench.view().property("highContrast").toBool());
  EXPECT_FALSE(bench.view().property("reducedMotion").toBool());
  EXPECT_EQ(bench.face().seatSelectionButton().background(), colourWithAlpha(kActionBlue));
  EXPECT_FALSE(bench.isShown("panelGround"));
}

TEST(HighContrast, AHostThatDecidesGoesBeforeTheSystem) {
  SystemWishes wishes;
  wishes.set({.highContrast = true, .reducedMotion = true});
  StatusBenchSetup setup = following(wishes);
  setup.properties = "highContrast: false; reducedMotion: false";
  StatusBench bench(setup);
  EXPECT_FALSE(bench.view().property("highContrast").toBool());
  EXPECT_FALSE(bench.view().property("reducedMotion").toBool());
  wishes.set({.highContrast = true, .reducedMotion = true, .scheme = ColourScheme::light});
  EXPECT_EQ(bench.face().seatSelectionButton().background(), colourWithAlpha(kActionBlue));
}

TEST(HighContrast, APanelMayGoBeforeTheWishesAndTheyBeforeThePanel) {
  auto wishes = std::make_unique<SystemWishes>();
  StatusBench bench(following(*wishes));
  wishes->set({.highContrast = true});
  wishes.reset();
  bench.tick();
  EXPECT_TRUE(bench.view().property("highContrast").toBool());
  SystemWishes others;
  {
    StatusBench gone(following(others));
    gone.destroyWindow();
    others.set({.highContrast = true});
  }
  others.set({});
}

TEST(HighContrast, ASchemeAloneChangesNothing) {
  EXPECT_EQ(paletteFor(false, ColourScheme::light), SeatPalette::usual);
  EXPECT_EQ(paletteFor(true, ColourScheme::any), SeatPalette::whiteOnBlack);
  EXPECT_EQ(paletteFor(true, ColourScheme::dark), SeatPalette::whiteOnBlack);
  EXPECT_EQ(paletteFor(true, ColourScheme::light), SeatPalette::blackOnWhite);
}

struct HighContrastScreens : testing::TestWithParam<ColourScheme> {
  StatusBenchSetup setup() {
    wishes.set({.highContrast = true, .reducedMotion = true, .scheme = GetParam()});
    StatusBenchSetup setup = following(wishes);
    setup.window = {360, 640};
    setup.properties = "defaultVenueId: 7; explainsStates: true; asksOnAnotherDay: true";
    return setup;
  }
  void judge(StatusBench& bench, const char* screen) {
    ScreenJudge(bench,
                std::string(screen) + " of palette " + std::to_string(static_cast<int>(GetParam())))
        .judge();
  }

  SystemWishes wishes;
};

TEST_P(HighContrastScreens, EverythingStandsOutOnThePanel) {
  StatusBench bench(setup());
  bench.store({"Section 209", "Row 8", "Seat 10"}, {362, 404});
  bench.tick();
  judge(bench, "panel");
  // Whatever the host has behind it.
  bench.window().setColor(QColor(128, 128, 128));
  judge(bench, "panel on grey");
}

TEST_P(HighContrastScreens, EverythingStandsOutInTheWizard) {
  StatusBench bench(setup());
  bench.open();
  judge(bench, "section");
  // A button that cannot be used is as easy to read as the others, and has an outline.
  const ButtonLook next = bench.wizard().nextButton();
  ASSERT_FALSE(next.enabled());
  EXPECT_EQ(next.alpha(), 1);
  EXPECT_EQ(contrast(next.titleColour(), next.background()), 21);
  bench.type("209");
  judge(bench, "filter");
  bench.turn([&] { bench.wizard().enterFilter(); });
  judge(bench, "row");
}

TEST_P(HighContrastScreens, EverythingStandsOutOnThePlanAndInAnAlert) {
  StatusBenchSetup away = setup();
  away.isHeard = false;
  StatusBench outside(away);
  outside.open();
  outside.turn([&] {
    outside.wizard().pick(1);
    outside.wizard().next();
  });
  ASSERT_TRUE(outside.wizard().alert().shown());
  judge(outside, "alert");

  StatusBench bench(setup());
  bench.open();
  bench.turn([&] { bench.wizard().pick(1); });
  bench.turn([&] { bench.wizard().next(); });
  judge(bench, "plan");
  EXPECT_EQ(contrast(bench.wizard().dotColour(), bench.wizard().dotBorderColour()), 21);
}

INSTANTIATE_TEST_SUITE_P(, HighContrastScreens,
                         testing::Values(ColourScheme::dark, ColourScheme::light),
                         [](const auto& test) {
                           return test.param == ColourScheme::dark ? "Dark" : "Light";
                         });

}  // namespace
}  // namespace halvora
