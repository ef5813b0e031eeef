// SPDX-License-Identifier: Apache-2.0
// The short ways to a seat, and the plan that is true: one line, a ticket's seat from the host, a
// choice that a show interrupts, corners of the picture.
#include <QQuickItem>
#include <string>

#include <gtest/gtest.h>

#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

void enter(StatusBench& bench, const char* line) {
  bench.type(QString::fromLatin1(line));
  bench.key(Qt::Key_Return);
}

void waitUntilClosed(StatusBench& bench) {
  bench.waitUntil([&] { return !bench.wizard().isLoaded(); });
}

TEST(SeatLine, FillsAllThreeStepsAtOnce) {
  for (const char* line : {"209 8 10", "Sec 209 Row 8 Seat 10"}) {
    StatusBench bench;
    bench.open();
    enter(bench, line);
    EXPECT_EQ(bench.text("selectionSummaryLabel"), "Section 209  |  Row 8  |  Seat 10") << line;
    EXPECT_EQ(bench.text("nextButton"), "Confirm Seat");
    EXPECT_EQ(bench.text("stepCount"), "Step 3 of 3");
    bench.key(Qt::Key_Return);
    waitUntilClosed(bench);
    EXPECT_EQ(bench.stored(), (SeatPoint{362, 404}));
  }
}

TEST(SeatLine, SaysWhyNothingIsFound) {
  StatusBench bench;
  bench.open();
  enter(bench, "209 Z 1");
  EXPECT_EQ(bench.selector().selectedSectionIndex(), -1);
  EXPECT_TRUE(bench.text("wizardMessage").startsWith("No row z in section 209, rows "))
      << bench.text("wizardMessage").toStdString();
  EXPECT_TRUE(bench.isShown("wizardMessage"));
  EXPECT_EQ(bench.text("seatFilter"), "209 Z 1");
}

TEST(SeatLine, AFilterNeverChoosesByItself) {
  StatusBench bench;
  bench.open();
  bench.type(QStringLiteral("216"));
  EXPECT_EQ(bench.selector().selectedSectionIndex(), -1);
  EXPECT_FALSE(bench.item("nextButton")->isEnabled());
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 1);
  EXPECT_TRUE(bench.text("selectionSummaryLabel").startsWith("Section 216"));
}

// What is only likely is chosen and waits to be seen.
TEST(SeatLine, ADoubtfulMatchIsNotGoneOnWith) {
  StatusBench bench;
  bench.open();
  bench.type(QStringLiteral("21"));
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 0);
  EXPECT_GE(bench.selector().selectedSectionIndex(), 0);
}

TEST(SeatLine, StandingAreasAreCalledByTheirOwnNames) {
  StatusBenchSetup setup;
  setup.map = mapWithStanding();
  StatusBench bench(setup);
  bench.open();
  EXPECT_EQ(bench.wizard().rows()->titleOf(1), "Standing");
  EXPECT_EQ(bench.wizard().rows()->detailOf(1), "Standing Floor");
  EXPECT_EQ(bench.wizard().rows()->detailOf(2), "");
  bench.wizard().filter(QStringLiteral("floor"));
  EXPECT_EQ(bench.wizard().rows()->rowCount(), 2);
  EXPECT_EQ(bench.wizard().rows()->bestMatch(), 1);
}

// From the host

TEST(TicketSeat, IsTakenFromTheHostAndFromALink) {
  StatusBench bench;
  bench.face().setSeat("209", "8", "10");
  bench.tick();
  EXPECT_EQ(bench.stored(), (SeatPoint{362, 404}));
  EXPECT_FALSE(bench.wizard().isPresented());
  EXPECT_EQ(bench.text("seatSelectionSummaryLabel"), "Section 209  |  Row 8  |  Seat 10");
  EXPECT_TRUE(bench.face().openLink("https://t.example/?section=209&row=8&seat=9"));
  bench.tick();
  EXPECT_NE(bench.stored(), (SeatPoint{362, 404}));
  EXPECT_FALSE(bench.face().openLink("https://t.example/?section=209"));
}

TEST(TicketSeat, WaitsForTheMap) {
  StatusBenchSetup setup;
  setup.isLoaded = false;
  StatusBench bench(setup);
  bench.face().setSeat("Section 209", "Row 8", "Seat 10");
  bench.turn([] {});
  for (int look = 0; look < 20 && !bench.stored(); ++look) bench.tick();
  EXPECT_EQ(bench.stored(), (SeatPoint{362, 404}));
}

TEST(TicketSeat, OneThatIsNotThereOpensTheWizardWithAMessage) {
  StatusBench bench;
  bench.turn([&] { bench.face().setSeat("209", "8", "1000"); });
  ASSERT_TRUE(bench.wizard().isPresented());
  EXPECT_TRUE(bench.text("wizardMessage").startsWith("No seat 1000 in row 8, seats "))
      << bench.text("wizardMessage").toStdString();
  EXPECT_FALSE(bench.stored());
}

TEST(TicketSeat, AStandingAreaIsChosenAtTheVenue) {
  StatusBenchSetup setup;
  setup.map = mapWithStanding();
  setup.isHeard = false;
  setup.properties = "defaultVenueId: 7";
  StatusBench bench(setup);
  bench.turn([&] { bench.face().setSeat("Standing Floor", "R1", "P1"); });
  ASSERT_TRUE(bench.wizard().isPresented());
  EXPECT_TRUE(bench.wizard().alert().shown());
  EXPECT_FALSE(bench.stored());
}

// A show

TEST(SeatChoice, HalfMadeSurvivesAShow) {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(4, 5);
  StatusBench bench(setup);
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Down);
  ASSERT_EQ(bench.text("selectionSummaryLabel"), "A  |  Row 2  |  --");
  bench.turn([&] { bench.phone.application.dismissPresentedScreens(); });
  waitUntilClosed(bench);
  bench.tick();
  bench.open();
  EXPECT_EQ(bench.text("selectionSummaryLabel"), "A  |  Row 2  |  --");
  EXPECT_EQ(bench.text("stepCount"), "Step 2 of 3");
  // Whoever closes it themselves begins anew.
  bench.click("closeButton");
  waitUntilClosed(bench);
  bench.tick();
  bench.open();
  EXPECT_EQ(bench.text("selectionSummaryLabel"), "--  |  --  |  --");
}

// The plan

TEST(SeatPlan, TheAreaIsThePicture) {
  for (const QSize window : {QSize(390, 844), QSize(360, 640), QSize(1280, 800)}) {
    StatusBenchSetup setup;
    setup.window = window;
    StatusBench bench(setup);
    bench.open();
    bench.key(Qt::Key_Down);
    bench.key(Qt::Key_Return);
    bench.settle();
    const QRectF area = bench.frame("standingDragArea");
    const QSizeF picture = bench.wizard().planPictureSize();
    ASSERT_FALSE(picture.isEmpty());
    EXPECT_NEAR(area.width() / area.height(), picture.width() / picture.height(), 0.02);
    EXPECT_EQ(bench.frame("standingOverlayImageView"), area);
    EXPECT_TRUE(bench.frame("standingSelectorContainer").contains(area));

    const auto tap = [&](QPointF place) {
      bench.clickAt(place);
      EXPECT_TRUE(area.contains(bench.frame("standingDotView")));
      return bench.selector().views().standingPlace.value_or(Point{-1, -1});
    };
    const Point nearLeft = tap(area.topLeft() + QPointF(1, 1));
    EXPECT_NEAR(nearLeft.x, 0, 0.02);
    EXPECT_NEAR(nearLeft.y, 0, 0.02);
    const Point farRight = tap(area.bottomRight() - QPointF(1, 1));
    EXPECT_NEAR(farRight.x, 1, 0.02);
    EXPECT_NEAR(farRight.y, 1, 0.02);
    EXPECT_TRUE(area.contains(bench.frame("standingStageSign")));
    EXPECT_EQ(bench.text("standingStageSignText"), "Stage");
  }
}

}  // namespace
}  // namespace halvora
