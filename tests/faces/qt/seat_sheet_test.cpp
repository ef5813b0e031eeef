// SPDX-License-Identifier: Apache-2.0
// The wizard's sheet as its user meets it: by mouse and finger, by keyboard alone, by ear, with
// large texts, from the right, and with a venue of a hundred thousand seats.
#include <QAccessible>
#include <QQuickItem>
#include <QRectF>
#include <string>

#include <gtest/gtest.h>

#include "halvora/wizard.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

struct SmallVenue : StatusBenchSetup {
  SmallVenue() { map = mapOfSeats(4, 5); }
};

// The row of the picker that many rows below its middle one.
QPointF rowBelow(StatusBench& bench, int rows) {
  const QRectF wheel = bench.frame("pickerView");
  const qreal row = wheel.height() / bench.item("pickerView")->property("visibleItemCount").toInt();
  return wheel.center() + QPointF(0, rows * row);
}

void waitForRest(StatusBench& bench) {
  bench.waitUntil([&] { return !bench.item("pickerList")->property("moving").toBool(); });
  bench.settle();
}

bool isClosed(StatusBench& bench) { return !bench.wizard().isLoaded(); }

void waitUntilClosed(StatusBench& bench) {
  bench.waitUntil([&] { return isClosed(bench); });
}

// Walks

TEST(SeatSheet, ASeatIsChosenByTappingRows) {
  StatusBench bench{SmallVenue()};
  bench.open();
  EXPECT_EQ(bench.pickedTitle(), "Select section...");
  EXPECT_FALSE(bench.item("nextButton")->isEnabled());
  EXPECT_FALSE(bench.isShown("backButton"));

  bench.clickAt(rowBelow(bench, 1));
  EXPECT_EQ(bench.pickedTitle(), "A");
  EXPECT_EQ(bench.text("selectionSummaryLabel"), "A  |  --  |  --");
  bench.click("nextButton");
  EXPECT_EQ(bench.pickedTitle(), "Select row...");
  bench.clickAt(rowBelow(bench, 2));
  EXPECT_EQ(bench.pickedTitle(), "Row 2");
  bench.click("nextButton");
  EXPECT_EQ(bench.text("nextButton"), "Confirm Seat");
  bench.clickAt(rowBelow(bench, 3));
  EXPECT_EQ(bench.text("selectionSummaryLabel"), "A  |  Row 2  |  3");
  bench.click("nextButton");

  waitUntilClosed(bench);
  EXPECT_EQ(bench.stored(), (SeatPoint{3, 2}));
  bench.tick();
  EXPECT_EQ(bench.text("seatSelectionSummaryLabel"), "A  |  Row 2  |  3");
}

TEST(SeatSheet, ThePickerTurnsUnderAFingerAndChoosesWhereItRests) {
  StatusBench bench{SmallVenue()};
  bench.open();
  const QPointF middle = rowBelow(bench, 0);
  bench.press(middle);
  for (int way = 10; way <= 90; way += 10) bench.moveTo(middle - QPointF(0, way));
  EXPECT_EQ(bench.selector().selectedSectionIndex(), -1) << "chosen while it still turns";
  bench.moveTo(middle - QPointF(0, 90));
  bench.release(middle - QPointF(0, 90));
  waitForRest(bench);
  EXPECT_GE(bench.selector().selectedSectionIndex(), 0);
  EXPECT_EQ(bench.wizard().rows()->indexOf(bench.selector().selectedSectionIndex() + 1),
            bench.item("pickerView")->property("currentIndex").toInt());
  // And back to the placeholder, which chooses nothing.
  bench.drag(middle, middle + QPointF(0, 200));
  waitForRest(bench);
  EXPECT_EQ(bench.selector().selectedSectionIndex(), -1);
  EXPECT_FALSE(bench.item("nextButton")->isEnabled());
}

TEST(SeatSheet, TheMouseWheelTurnsThePicker) {
  StatusBench bench{SmallVenue()};
  bench.open();
  bench.wheel(rowBelow(bench, 0), -15);
  waitForRest(bench);
  bench.waitUntil([&] { return bench.selector().selectedSectionIndex() >= 0; });
  EXPECT_GE(bench.item("pickerView")->property("currentIndex").toInt(), 1);
}

TEST(SeatSheet, ASeatIsChosenByKeyboardAlone) {
  StatusBench bench{SmallVenue()};
  bench.key(Qt::Key_Tab);
  bench.key(Qt::Key_Space);
  ASSERT_TRUE(bench.isShown("seatSheetContent"));
  EXPECT_EQ(bench.focused(), "pickerView");
  // Return does nothing as long as nothing is chosen.
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 0);
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 1);
  EXPECT_EQ(bench.focused(), "pickerView");
  bench.key(Qt::Key_End);
  EXPECT_EQ(bench.pickedTitle(), "Row 4");
  bench.key(Qt::Key_Up);
  EXPECT_EQ(bench.pickedTitle(), "Row 3");
  bench.key(Qt::Key_Return);
  bench.key(Qt::Key_PageDown);
  EXPECT_EQ(bench.pickedTitle(), "5");
  bench.key(Qt::Key_Home);
  EXPECT_EQ(bench.selector().selectedSeatIndex(), -1);
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Enter);
  waitUntilClosed(bench);
  EXPECT_EQ(bench.stored(), (SeatPoint{1, 3}));
}

TEST(SeatSheet, BackKeepsWhatWasChosen) {
  StatusBench bench{SmallVenue()};
  bench.open();
  bench.clickAt(rowBelow(bench, 1));
  bench.click("nextButton");
  bench.clickAt(rowBelow(bench, 3));
  bench.click("backButton");
  EXPECT_EQ(bench.pickedTitle(), "A");
  bench.click("nextButton");
  EXPECT_EQ(bench.pickedTitle(), "Row 3");
}

TEST(SeatSheet, OpensAtTheStoredSeat) {
  StatusBench bench{SmallVenue()};
  bench.store({"A", "Row 3", "4"}, {4, 3});
  bench.tick();
  bench.open();
  EXPECT_EQ(bench.pickedTitle(), "A");
  EXPECT_TRUE(bench.item("nextButton")->isEnabled());
  bench.click("nextButton");
  EXPECT_EQ(bench.pickedTitle(), "Row 3");
  bench.click("nextButton");
  EXPECT_EQ(bench.pickedTitle(), "4");
}

TEST(SeatSheet, IsLeftWithoutAChoice) {
  for (const int way : {0, 1, 2}) {
    StatusBench bench{SmallVenue()};
    bench.open();
    bench.clickAt(rowBelow(bench, 1));
    if (way == 0) bench.click("closeButton");
    // Keys, which slip more easily, are asked first.
    for (int press = 0; press < 2; ++press) {
      if (way == 1) bench.key(Qt::Key_Escape);
      if (way == 2) bench.key(Qt::Key_Back);
    }
    waitUntilClosed(bench);
    EXPECT_EQ(bench.stored(), std::nullopt);
    EXPECT_FALSE(bench.isShown("seatSheetContent"));
    bench.tick();
    bench.open();
    EXPECT_EQ(bench.pickedTitle(), "Select section...");
  }
}

TEST(SeatSheet, ThePhonesBackKeyGoesOneStepBack) {
  StatusBench bench{SmallVenue()};
  bench.open();
  bench.clickAt(rowBelow(bench, 1));
  bench.click("nextButton");
  bench.key(Qt::Key_Back);
  EXPECT_FALSE(isClosed(bench));
  EXPECT_EQ(bench.selector().currentStep(), 0);
}

TEST(SeatSheet, NothingBelowItIsTouched) {
  StatusBench bench{SmallVenue()};
  const QRectF button = bench.frame("seatSelectionButton");
  bench.open();
  const std::size_t logged = bench.phone.defaults.log.entries.size();
  bench.clickAt(button.center());
  EXPECT_FALSE(isClosed(bench));
  EXPECT_EQ(bench.phone.defaults.log.entries.size(), logged);
}

TEST(SeatSheet, TheKeyboardGoesRoundWithinIt) {
  StatusBench bench;
  bench.open();
  bench.key(Qt::Key_End);
  bench.key(Qt::Key_Return);
  std::string order;
  for (int step = 0; step < 5; ++step) {
    order += bench.focused().toStdString() + " ";
    bench.key(Qt::Key_Tab);
  }
  EXPECT_EQ(order, "pickerView backButton closeButton seatFilter pickerView ");
  bench.key(Qt::Key_Tab, Qt::ShiftModifier);
  EXPECT_EQ(bench.focused(), "pickerView");
}

// Filter

TEST(SeatSheet, TypingNarrowsALongListAndChoosesNothing) {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(1, 500);
  StatusBench bench(setup);
  bench.open();
  EXPECT_FALSE(bench.isShown("seatFilter")) << "a list of two needs no filter";
  for (int step = 0; step < 2; ++step) {
    bench.key(Qt::Key_Down);
    bench.key(Qt::Key_Return);
  }
  ASSERT_TRUE(bench.isShown("seatFilter"));
  bench.type("1");
  EXPECT_EQ(bench.focused(), "seatFilter");
  bench.type("23");
  EXPECT_EQ(bench.text("seatFilter"), "123");
  EXPECT_EQ(bench.text("filterMatches"), "1 found");
  EXPECT_EQ(bench.selector().selectedSeatIndex(), -1);
  EXPECT_EQ(bench.pickedTitle(), "Select seat...");
  bench.key(Qt::Key_Down);
  EXPECT_EQ(bench.pickedTitle(), "123");
  EXPECT_EQ(bench.selector().selectedSeatIndex(), 122);
  EXPECT_EQ(bench.text("selectionSummaryLabel"), "A  |  Row 1  |  123");

  bench.key(Qt::Key_Backspace);
  EXPECT_EQ(bench.pickedTitle(), "123") << "what is chosen stays";
  bench.key(Qt::Key_Up);
  EXPECT_EQ(bench.pickedTitle(), "122");
  bench.key(Qt::Key_Return);
  waitUntilClosed(bench);
  EXPECT_EQ(bench.stored(), (SeatPoint{122, 1}));
}

TEST(SeatSheet, AFilterWithoutMatchesChoosesNothing) {
  StatusBench bench;
  bench.open();
  bench.key(Qt::Key_End);
  bench.type("zzz");
  EXPECT_EQ(bench.selector().selectedSectionIndex(), -1);
  EXPECT_EQ(bench.text("filterMatches"), "0 found");
  EXPECT_FALSE(bench.item("nextButton")->isEnabled());
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 0);
}

TEST(SeatSheet, EscapeEmptiesTheFilterAndThenCloses) {
  StatusBench bench;
  bench.open();
  bench.type("21");
  bench.key(Qt::Key_Down);
  EXPECT_EQ(bench.pickedTitle(), "Section 210");
  bench.key(Qt::Key_Escape);
  EXPECT_FALSE(isClosed(bench));
  EXPECT_EQ(bench.text("seatFilter"), "");
  EXPECT_EQ(bench.pickedTitle(), "Section 210") << "what is chosen stays";
  EXPECT_GT(bench.item("pickerView")->property("count").toInt(), 20);
  bench.key(Qt::Key_Escape);
  EXPECT_FALSE(isClosed(bench));
  bench.key(Qt::Key_Escape);
  waitUntilClosed(bench);
}

TEST(SeatSheet, EachStepBeginsWithoutAFilter) {
  StatusBench bench;
  bench.open();
  bench.type("216");
  bench.key(Qt::Key_Return);
  EXPECT_EQ(bench.selector().currentStep(), 1);
  EXPECT_EQ(bench.text("seatFilter"), "");
  EXPECT_EQ(bench.pickedTitle(), "Select row...");
}

TEST(SeatSheet, TheFilterIsEmptiedByItsButton) {
  StatusBench bench;
  bench.open();
  bench.type("216");
  bench.key(Qt::Key_Down);
  bench.click("filterClear");
  EXPECT_EQ(bench.text("seatFilter"), "");
  EXPECT_EQ(bench.pickedTitle(), "Section 216");
}

// Standing

StatusBenchSetup standing(bool isHeard = true) {
  StatusBenchSetup setup;
  setup.map = mapWithStanding();
  setup.isHeard = isHeard;
  setup.properties = "defaultVenueId: 7";
  return setup;
}

void goToPlan(StatusBench& bench) {
  bench.open();
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Return);
  ASSERT_TRUE(bench.isShown("standingDragArea"));
}

TEST(SeatSheet, AwayFromTheVenueNobodyStandsAnywhere) {
  StatusBench bench(standing(false));
  bench.open();
  EXPECT_EQ(bench.isShown("standingDragArea"), false);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    bench.clickAt(rowBelow(bench, bench.pickedTitle() == "Standing" ? 0 : 1));
    bench.click("nextButton");
    ASSERT_TRUE(bench.isShown("alertContent"));
    EXPECT_EQ(bench.text("alertTitle"), "Standing Location At Venue");
    bench.key(key);
    bench.waitUntil([&] { return !bench.isShown("alertContent"); });
    EXPECT_EQ(bench.selector().currentStep(), 0);
    EXPECT_FALSE(isClosed(bench));
  }
}

TEST(SeatSheet, TheDotBeginsInTheMiddleAndFollowsTheFinger) {
  StatusBench bench(standing());
  goToPlan(bench);
  EXPECT_EQ(bench.text("titleLabel"), "Select Standing Location");
  EXPECT_EQ(bench.text("standingStageText"), "Stage");
  EXPECT_EQ(bench.frame("standingStageLabel").height(), 64);
  const QRectF area = bench.frame("standingDragArea");
  EXPECT_EQ(area.top(), bench.frame("standingStageLabel").bottom() + 10);
  EXPECT_NEAR(bench.frame("standingDotView").center().x(), area.center().x(), 1);
  EXPECT_NEAR(bench.frame("standingDotView").center().y(), area.center().y(), 1);

  bench.press(area.center());
  bench.moveTo(area.topRight() + QPointF(-20, 20));
  EXPECT_EQ(bench.selector().selectedSeatIndex(), 4);
  EXPECT_EQ(bench.selector().selectedRowIndex(), 0);
  // Beyond the edge, where the finger is still followed.
  bench.moveTo(area.bottomLeft() + QPointF(-10, 300));
  bench.release(area.bottomLeft() + QPointF(-10, 300));
  EXPECT_EQ(bench.frame("standingDotView").bottomLeft(), area.bottomLeft());
  bench.click("nextButton");
  waitUntilClosed(bench);
  EXPECT_EQ(bench.stored(), (SeatPoint{0, 40}));
  bench.tick();
  EXPECT_EQ(bench.text("seatSelectionButton"), "Change Location");
  EXPECT_EQ(bench.text("seatSelectionSummaryLabel"), "Standing Floor");
}

TEST(SeatSheet, TheDotFollowsTheArrowKeys) {
  StatusBench bench(standing());
  goToPlan(bench);
  EXPECT_EQ(bench.focused(), "standingDragArea");
  const auto place = [&] {
    return std::to_string(bench.selector().selectedSeatIndex()) + " " +
           std::to_string(bench.selector().selectedRowIndex());
  };
  EXPECT_EQ(place(), "2 2");
  bench.key(Qt::Key_Right);
  EXPECT_EQ(place(), "3 2");
  bench.key(Qt::Key_Up);
  bench.key(Qt::Key_Up);
  EXPECT_EQ(place(), "3 0");
  bench.key(Qt::Key_Up);
  EXPECT_EQ(place(), "3 0");
  bench.key(Qt::Key_Left);
  bench.key(Qt::Key_Down);
  EXPECT_EQ(place(), "2 1");
  bench.key(Qt::Key_Down, Qt::ShiftModifier);
  bench.key(Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(place(), "2 1");
  EXPECT_EQ(bench.spokenName("standingDragArea"),
            "Plan of the standing area. The arrow keys move the dot. "
            "50 percent from the left, 25 percent from the stage");
  bench.key(Qt::Key_Return);
  waitUntilClosed(bench);
  EXPECT_EQ(bench.stored(), (SeatPoint{20, 10}));
}

TEST(SeatSheet, AVenuesPlanTakesThePlaceOfTheStage) {
  StatusBench bench;
  goToPlan(bench);
  EXPECT_FALSE(bench.isShown("standingStageLabel"));
  EXPECT_FALSE(bench.wizard().planPicture().isNull());
  EXPECT_EQ(bench.frame("standingDragArea"), bench.frame("standingOverlayImageView"));
  // The picture is there: its middle is not the sheet's black.
  const QPoint middle = bench.frame("standingDragArea").center().toPoint() + QPoint(40, 40);
  EXPECT_GT(bench.picture().pixelColor(middle).lightness(), 10);
}

TEST(SeatSheet, AHallIsNotMirrored) {
  StatusBenchSetup setup = standing();
  setup.language = "ar";
  StatusBench bench(setup);
  goToPlan(bench);
  const QRectF area = bench.frame("standingDragArea");
  bench.clickAt(area.topLeft() + QPointF(15, 15));
  EXPECT_EQ(bench.selector().selectedSeatIndex(), 0);
  EXPECT_EQ(bench.frame("standingDotView").topLeft(), area.topLeft());
  bench.key(Qt::Key_Right);
  EXPECT_EQ(bench.selector().selectedSeatIndex(), 1);
}

// Layout

TEST(SeatSheet, ThePickerHasItsShareOfTheHeight) {
  StatusBenchSetup setup = SmallVenue();
  setup.window = {390, 900};
  StatusBench bench(setup);
  bench.open();
  bench.clickAt(rowBelow(bench, 1));
  bench.click("nextButton");
  EXPECT_NEAR(bench.frame("seatBody").height(), 0.7 * bench.frame("seatSheetContent").height(), 1);
  EXPECT_EQ(bench.frame("backButton").height(), 44);
  EXPECT_NEAR(bench.frame("nextButton").width(), 1.55 * bench.frame("backButton").width(), 0.01);
  EXPECT_EQ(bench.frame("backButton").left(), 16);
  EXPECT_EQ(bench.frame("nextButton").right(), 390 - 16);
}

void expectAllOnScreen(StatusBench& bench) {
  const QRectF sheet = bench.frame("seatSheetContent");
  for (const char* name : {"closeButton", "titleLabel", "stepLabel", "selectionSummaryLabel",
                           "pickerView", "backButton", "nextButton"}) {
    EXPECT_TRUE(sheet.contains(bench.frame(name))) << name;
  }
  EXPECT_LE(bench.frame("pickerView").bottom(), bench.frame("nextButton").top());
  EXPECT_LE(bench.frame("selectionSummaryLabel").bottom(), bench.frame("pickerView").top());
}

TEST(SeatSheet, FitsASmallPhoneAndALargeWindow) {
  for (const QSize window : {QSize(360, 640), QSize(390, 844), QSize(1280, 800)}) {
    StatusBenchSetup setup = SmallVenue();
    setup.window = window;
    StatusBench bench(setup);
    bench.open();
    bench.clickAt(rowBelow(bench, 1));
    bench.click("nextButton");
    expectAllOnScreen(bench);
    EXPECT_FALSE(bench.item("seatSheetScroller")->property("interactive").toBool());
    EXPECT_LE(bench.frame("seatSheetContent").width(), 540);
  }
}

TEST(SeatSheet, FollowsTheWindow) {
  StatusBench bench{SmallVenue()};
  bench.open();
  bench.window().resize(844, 390);
  bench.settle();
  EXPECT_EQ(bench.frame("seatSheetContent").width(), 540);
  EXPECT_TRUE(bench.frame("seatSheetContent").contains(bench.frame("nextButton")));
  EXPECT_EQ(bench.pickedTitle(), "Select section...");
}

TEST(SeatSheet, LargeTextsAreScrolledToAndNotCut) {
  StatusBenchSetup setup;
  setup.window = {360, 640};
  setup.textScale = 2;
  StatusBench bench(setup);
  bench.open();
  QQuickItem& scroller = *bench.item("seatSheetScroller");
  ASSERT_TRUE(scroller.property("interactive").toBool());
  for (const char* name : {"titleLabel", "stepLabel", "selectionSummaryLabel"}) {
    const QQuickItem& label = *bench.item(name);
    EXPECT_FALSE(label.property("truncated").toBool()) << name;
    EXPECT_LE(label.property("contentWidth").toReal(), label.width()) << name;
    EXPECT_LE(label.property("contentHeight").toReal(), label.height() + 0.01) << name;
  }
  // The keyboard brings what it is at into sight.
  bench.key(Qt::Key_Down);
  EXPECT_LE(bench.frame("pickerView").bottom(), bench.frame("nextButton").top());
  // A finger beside the picker scrolls the sheet.
  scroller.setProperty("contentY", 0);
  bench.drag({180, 300}, {180, 60});
  bench.waitUntil([&] { return !scroller.property("moving").toBool(); });
  EXPECT_GT(scroller.property("contentY").toReal(), 50);
}

TEST(SeatSheet, IsMirroredWhereOneReadsFromTheRight) {
  StatusBenchSetup setup;
  setup.language = "ar";
  StatusBench bench(setup);
  bench.open();
  bench.key(Qt::Key_End);
  bench.key(Qt::Key_Return);
  EXPECT_GT(bench.frame("backButton").left(), bench.frame("nextButton").right());
  EXPECT_GT(bench.frame("closeButton").center().x(), 195);
  EXPECT_EQ(bench.text("nextButton"), "التالي");
}

// By ear

TEST(SeatSheet, SaysWhereThePickerStands) {
  StatusBench bench{SmallVenue()};
  bench.open();
  EXPECT_EQ(bench.spokenName("seatSheetContent"), "Select Seat");
  EXPECT_EQ(bench.spokenName("pickerView"), "Select section...");
  bench.key(Qt::Key_Down);
  EXPECT_EQ(bench.spokenName("pickerView"), "A, 1 of 2");
  bench.key(Qt::Key_Return);
  bench.key(Qt::Key_Down);
  bench.key(Qt::Key_Down);
  EXPECT_EQ(bench.spokenName("pickerView"), "Row 2, 2 of 4");
  EXPECT_EQ(bench.spokenName("nextButton"), "Next");
  EXPECT_EQ(bench.spokenName("closeButton"), "Close");
}

TEST(SeatSheet, IsTurnedByAScreenReader) {
  StatusBench bench{SmallVenue()};
  bench.open();
  QAccessibleInterface* wheel = QAccessible::queryAccessibleInterface(bench.item("pickerView"));
  ASSERT_NE(wheel, nullptr);
  EXPECT_EQ(wheel->role(), QAccessible::List);
  ASSERT_NE(wheel->actionInterface(), nullptr);
  wheel->actionInterface()->doAction(QAccessibleActionInterface::increaseAction());
  wheel->actionInterface()->doAction(QAccessibleActionInterface::increaseAction());
  wheel->actionInterface()->doAction(QAccessibleActionInterface::decreaseAction());
  EXPECT_EQ(bench.spokenName("pickerView"), "A, 1 of 2");
  EXPECT_EQ(bench.selector().selectedSectionIndex(), 0);
}

TEST(SeatSheet, SaysWhatAFilterLeaves) {
  StatusBench bench;
  bench.open();
  EXPECT_EQ(bench.spokenName("seatFilter"), "Type to narrow the list");
  bench.type("216");
  EXPECT_EQ(bench.spokenName("pickerView"), "Select section...");
  bench.key(Qt::Key_Down);
  EXPECT_EQ(bench.spokenName("pickerView"), "Section 216, 1 of 1");
}

// Large venues

TEST(SeatSheet, AHundredThousandSeatsCostWhatIsSeenOfThem) {
  StatusBenchSetup setup;
  setup.map = mapOfSeats(1, 100'000);
  StatusBench bench(setup);
  bench.open();
  for (int step = 0; step < 2; ++step) {
    bench.key(Qt::Key_Down);
    bench.key(Qt::Key_Return);
  }
  const auto* list = bench.item("pickerList")->property("contentItem").value<QQuickItem*>();
  EXPECT_EQ(bench.item("pickerView")->property("count").toInt(), 100'001);
  EXPECT_LE(list->childItems().size(), 40);
  bench.key(Qt::Key_End);
  EXPECT_EQ(bench.pickedTitle(), "100000");
  EXPECT_EQ(bench.spokenName("pickerView"), "100000, 100000 of 100000");
  EXPECT_LE(list->childItems().size(), 60);
  bench.type("54321");
  EXPECT_EQ(bench.selector().selectedSeatIndex(), -1);
  bench.key(Qt::Key_Return);
  waitUntilClosed(bench);
  EXPECT_EQ(bench.stored(), (SeatPoint{54321, 1}));
}

}  // namespace
}  // namespace halvora
