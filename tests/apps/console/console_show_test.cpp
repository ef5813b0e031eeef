// SPDX-License-Identifier: Apache-2.0
// A show file on the console: played to the hall by its buttons, by keys and by assistive
// technology, edited while it is played, and never more than was asked for.
#include <QAccessible>
#include <QFile>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/console/venue_bench.h"
#include "tests/faces/qt/access_tree.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::Not;

const char* const kShow =
    "# Every word of this stays.\n"
    "application: 4242\n"
    "venue: 7\n"
    "transmitter: 1\n"
    "cues:\n"
    "  - {name: Doors, look: {mode: 1, colour: \"#ff2d20\"}}  # red\n"
    "  - name: Song\n"
    "    at: 0\n"
    "    look:\n"
    "      mode: 1 # steady\n"
    "      colour: \"#1f5bff\"\n"
    "  - {name: Verse, at: 5, look: {mode: 1, colour: \"#2bff4f\"}}\n"
    "  - {name: Talk, look: {mode: 1, colour: \"#ffd400\"}}\n";

struct ConsoleShow : VenueTest {
  ConsoleShow() : path(folder.write("show.yaml", kShow)) {}

  void openShow() {
    desk.cues()->setFile(QString::fromStdString(path));
    desk.cues()->open();
    settle();
    ASSERT_TRUE(cues().isOpen()) << desk.cues()->faults().join(' ').toStdString();
  }
  CueDesk& cues() { return *desk.cues(); }
  void press(const char* name) {
    const AccessNodes nodes = accessTree(window());
    const AccessNode* found = withName(nodes, QString::fromLatin1(name));
    ASSERT_NE(found, nullptr) << name;
    EXPECT_TRUE(found->act(QAccessibleActionInterface::pressAction())) << name;
    settle();
  }
  std::string where() { return cues().position().toStdString(); }
  std::string message() { return cues().message().toStdString(); }
  std::string faults() { return cues().faults().join('\n').toStdString(); }
  std::string bytes() {
    QFile file(QString::fromStdString(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
  }
  QColor colour() {
    const Broadcast& packet = desk.packet();
    return {packet.red, packet.green, packet.blue};
  }

  const std::string path;
};

TEST_F(ConsoleShow, AWalkByPressesPlaysItToTheHall) {
  open();
  openShow();
  EXPECT_EQ(where(), "ready. Next: Doors, by GO");
  press("GO");
  EXPECT_EQ(where(), "playing 1 of 4, Doors. Next: Song, by GO");
  pass(milliseconds(1500));
  expectNear(seatColour(seat(3, 3)), onSeat(QColor("#ff2d20")));
  press("GO");
  EXPECT_EQ(where(), "playing 2 of 4, Song. Next: Verse, in 5 s");
  pass(milliseconds(1500));
  EXPECT_EQ(where(), "playing 2 of 4, Song. Next: Verse, in 4 s");
  expectNear(seatColour(seat(3, 3)), onSeat(QColor("#1f5bff")));
  press("Hold the show");
  pass(milliseconds(9000));
  EXPECT_EQ(where(), "held 2 of 4, Song. Next: Verse, by GO");
  press("Resume the show");
  pass(milliseconds(3500));
  EXPECT_EQ(where(), "playing 3 of 4, Verse. Next: Talk, by GO");
  press("Back to the cue before");
  EXPECT_EQ(cues().current(), 1);
  press("Cue 4, Talk, by GO, Steady");
  EXPECT_EQ(cues().chosen(), 3);
  EXPECT_EQ(cues().current(), 1);
  press("Go to Talk");
  EXPECT_EQ(where(), "playing 4 of 4, Talk. Nothing comes after it");
  press("GO");
  EXPECT_THAT(message(), HasSubstr("no cue after the last"));
  EXPECT_EQ(colour(), QColor("#ffd400"));
}

TEST_F(ConsoleShow, BlackoutAndPanicLatchOnOneWay) {
  open();
  openShow();
  press("GO");
  pass(milliseconds(1500));
  // The console's own button and the show's are one.
  press("Blackout");
  EXPECT_EQ(cues().state(), QStringLiteral("blackout"));
  EXPECT_TRUE(desk.isBlackout());
  EXPECT_EQ(desk.packet().master, 0);
  EXPECT_EQ(desk.packet().mode, 1);
  press("GO");
  EXPECT_THAT(message(), HasSubstr("not obeyed during blackout"));
  press("End the show, give the air to the controls");
  EXPECT_THAT(message(), HasSubstr("The hall is black"));
  pass(milliseconds(1000));
  EXPECT_EQ(seatColour(seat(3, 3)), onSeat(Qt::black));
  key(Qt::Key_B);
  EXPECT_EQ(cues().state(), QStringLiteral("playing"));
  EXPECT_FALSE(desk.isBlackout());
  press("Panic");
  EXPECT_EQ(cues().state(), QStringLiteral("panic"));
  const std::uint16_t black = desk.packet().sequence;
  EXPECT_EQ(desk.packet().mode, 1);
  pass(milliseconds(350));
  EXPECT_EQ(desk.packet().mode, 0);
  EXPECT_EQ(desk.packet().sequence, black + 1);
  EXPECT_EQ(crowd().phone(0).state().screen.currentMode, 0U);
  press("Release");
  EXPECT_EQ(cues().state(), QStringLiteral("held"));
  EXPECT_EQ(colour(), QColor("#ff2d20"));
}

TEST_F(ConsoleShow, KeysPlayItAndWhatIsTypedDoesNot) {
  openShow();
  key(Qt::Key_PageDown);
  EXPECT_EQ(cues().current(), 0);
  key(Qt::Key_PageDown);
  key(Qt::Key_PageUp);
  EXPECT_EQ(cues().current(), 0);
  key(Qt::Key_F6);
  EXPECT_EQ(cues().state(), QStringLiteral("held"));
  key(Qt::Key_F6);
  key(Qt::Key_F7);
  EXPECT_EQ(cues().state(), QStringLiteral("blackout"));
  key(Qt::Key_F7);
  EXPECT_EQ(cues().state(), QStringLiteral("playing"));
  item("showFile").forceActiveFocus();
  key(Qt::Key_P, QStringLiteral("p"));
  key(Qt::Key_Space, QStringLiteral(" "));
  EXPECT_EQ(cues().state(), QStringLiteral("playing"));
  EXPECT_EQ(cues().current(), 0);
  key(Qt::Key_F12);
  EXPECT_EQ(cues().state(), QStringLiteral("panic"));
  // Arrows choose, and play nothing.
  key(Qt::Key_F7);
  item("cueStack").forceActiveFocus();
  key(Qt::Key_Down);
  key(Qt::Key_Down);
  EXPECT_EQ(cues().chosen(), 1);
  EXPECT_EQ(cues().current(), 0);
}

TEST_F(ConsoleShow, TheControlsAreOffTheAirUntilTheShowEnds) {
  openShow();
  key(Qt::Key_PageDown);
  pass(milliseconds(200));
  const std::uint16_t played = desk.packet().sequence;
  desk.set("mode", 5);
  pass(milliseconds(500));
  EXPECT_EQ(desk.packet().mode, 1);
  EXPECT_EQ(desk.packet().sequence, played);
  press("End the show, give the air to the controls");
  pass(milliseconds(200));
  EXPECT_EQ(desk.packet().mode, 5);
  EXPECT_EQ(desk.packet().sequence, played + 1);
  EXPECT_EQ(where(), "ready. Next: Doors, by GO");
}

TEST_F(ConsoleShow, OffTheAirNothingIsSentAndTheShowsTimeStands) {
  openShow();
  cues().obey("goto Song");
  pass(milliseconds(1000));
  desk.setOnAir(false);
  const int sent = desk.packetsSent();
  pass(milliseconds(20000));
  EXPECT_EQ(desk.packetsSent(), sent);
  EXPECT_EQ(where(), "held 2 of 4, Song. Next: Verse, by GO");
  key(Qt::Key_PageDown);
  EXPECT_TRUE(desk.isOnAir());
  EXPECT_EQ(colour(), QColor("#2bff4f"));
}

TEST_F(ConsoleShow, EditsAreTakenOverWhileItPlaysAndSavedWithTheirComments) {
  openShow();
  cues().obey("goto Doors");
  const std::uint16_t played = desk.packet().sequence;
  cues().choose(0);
  cues().edit("name", QStringLiteral("Einlaß"));
  cues().choose(3);
  cues().edit("fade", "0.5");
  pass(milliseconds(1000));
  // What runs goes on as it was.
  EXPECT_EQ(desk.packet().sequence, played);
  EXPECT_EQ(where(), "playing 1 of 4, Einlaß. Next: Song, by GO");
  EXPECT_TRUE(cues().isEdited());
  cues().choose(1);
  desk.setColour(QColor("#00e5ff"));
  desk.set("mode", 1);
  press("Controls to look");
  EXPECT_EQ(desk.packet().sequence, played);
  press("GO");
  EXPECT_EQ(colour(), QColor("#00e5ff"));
  EXPECT_EQ(bytes(), kShow);
  // The look took a comment with it, which is said before it is done.
  press("Save the show file");
  EXPECT_THAT(message(), HasSubstr("# steady"));
  EXPECT_EQ(bytes(), kShow);
  press("Save the show file");
  EXPECT_THAT(message(), HasSubstr("Saved"));
  EXPECT_FALSE(cues().isEdited());
  EXPECT_THAT(bytes(), HasSubstr("# Every word of this stays.\napplication"));
  EXPECT_THAT(bytes(),
              HasSubstr("- {name: \"Einlaß\", look: {mode: 1, colour: \"#ff2d20\"}}  # red\n"));
  EXPECT_THAT(bytes(), HasSubstr("look:\n      {mode: Steady, colour: \"#00e5ff\""));
  EXPECT_THAT(bytes(), HasSubstr("{name: Talk, fade: \"0.5\", look:"));
}

TEST_F(ConsoleShow, EscapeTakesBackWhatIsTypedAndClosesOverEditsOnlyWhenAskedTwice) {
  openShow();
  desk.setOnAir(false);
  cues().choose(0);
  settle();
  item("cue-name").forceActiveFocus(Qt::TabFocusReason);
  key(Qt::Key_X, QStringLiteral("x"));
  ASSERT_TRUE(item("cue-name").property("text").toString().contains(QLatin1Char('x')));
  key(Qt::Key_Escape);
  EXPECT_TRUE(window().isVisible());
  EXPECT_EQ(item("cue-name").property("text"), QStringLiteral("Doors"));
  cues().edit("fade", "1");
  key(Qt::Key_Escape);
  EXPECT_TRUE(window().isVisible());
  EXPECT_THAT(message(), HasSubstr("not saved, and would be lost. Save it, or close once more."));
  key(Qt::Key_Escape);
  EXPECT_FALSE(window().isVisible());
}

TEST_F(ConsoleShow, TheWindowsOwnButtonAsksToo) {
  openShow();
  cues().edit("fade", "1");
  cues().choose(0);
  cues().edit("fade", "1");
  EXPECT_FALSE(window().close());
  EXPECT_TRUE(window().isVisible());
  EXPECT_TRUE(window().close());
  EXPECT_FALSE(window().isVisible());
}

TEST_F(ConsoleShow, CuesComeAndGoAndTheShowKeepsItsPlace) {
  openShow();
  cues().obey("goto Verse");
  cues().choose(0);
  press("Add a cue with the look of the controls");
  EXPECT_EQ(cues().count(), 5);
  EXPECT_EQ(cues().chosen(), 1);
  EXPECT_EQ(where(), "playing 4 of 5, Verse. Next: Talk, by GO");
  press("Remove Cue 5");
  EXPECT_EQ(where(), "playing 3 of 4, Verse. Next: Talk, by GO");
  cues().choose(2);
  cues().removeCue();
  EXPECT_THAT(message(), HasSubstr("\"Verse\" is on the air"));
  EXPECT_EQ(cues().count(), 4);
}

TEST_F(ConsoleShow, WhatIsWrongIsSaidAndChangesNothingOnTheAir) {
  openShow();
  cues().obey("goto Song");
  const std::uint16_t played = desk.packet().sequence;
  folder.write("show.yaml", "application: 4242\ncues:\n- {name: Song, look: {mode: Disco}}\n");
  press("Open again, show file");
  EXPECT_THAT(faults(), HasSubstr("show.yaml:3: cue \"Song\": "));
  EXPECT_THAT(faults(), HasSubstr("Steady"));
  EXPECT_THAT(message(), HasSubstr("Nothing has changed on the air"));
  EXPECT_EQ(cues().count(), 4);
  cues().choose(2);
  cues().edit("at", "soon");
  EXPECT_THAT(faults(), HasSubstr("show.yaml:12: cue \"Verse\": \"at\" must be seconds"));
  EXPECT_EQ(cues().chosenCue()["at"], QStringLiteral("5"));
  // Its cue is gone from the file.
  folder.write("show.yaml", "application: 4242\nvenue: 7\ncues:\n- {name: Other, look: {}}\n");
  cues().open();
  EXPECT_THAT(message(), HasSubstr("has no cue \"Song\" any more"));
  cues().setFile(QString::fromStdString(folder.write("b.yaml", kShow)));
  cues().open();
  EXPECT_THAT(message(), HasSubstr("End that show"));
  pass(milliseconds(1000));
  EXPECT_EQ(desk.packet().sequence, played);
  EXPECT_EQ(cues().state(), QStringLiteral("playing"));
}

TEST_F(ConsoleShow, AFileThatSomebodyElseHasChangedIsTakenOverOrKeptOnPurpose) {
  openShow();
  cues().obey("goto Doors");
  std::string theirs = kShow;
  theirs.replace(theirs.find("#1f5bff"), 7, "#ff00ff");
  folder.write("show.yaml", theirs);
  cues().choose(3);
  cues().edit("fade", "1");
  press("Save the show file");
  EXPECT_THAT(message(), HasSubstr("by somebody else"));
  EXPECT_EQ(bytes(), theirs);
  press("Open again, show file");
  EXPECT_THAT(message(), HasSubstr("not saved, and would be lost"));
  press("Open again, show file");
  EXPECT_FALSE(cues().isEdited());
  EXPECT_EQ(cues().current(), 0);
  press("GO");
  EXPECT_EQ(colour(), QColor("#ff00ff"));
}

TEST_F(ConsoleShow, FilesThatAreNoneAreRefusedInALine) {
  for (const std::string& file :
       {folder.path(), folder.path() + "/none", std::string("/dev/zero")}) {
    cues().setFile(QString::fromStdString(file));
    cues().open();
    EXPECT_THAT(message(), HasSubstr("cannot be read")) << file;
    EXPECT_FALSE(cues().isOpen());
  }
  cues().setFile(QString::fromStdString(
      folder.write("other.yaml", "venue: 9\ncues:\n- {name: a, look: {}}\n")));
  cues().open();
  EXPECT_THAT(message(), HasSubstr("for venue 9, and this hall is venue 7"));
  EXPECT_TRUE(cues().isOpen());
  // A folder that cannot be written into keeps its file.
  cues().choose(0);
  cues().edit("fade", "1");
  std::filesystem::remove_all(folder.path());
  cues().save();
  cues().save();
  EXPECT_THAT(message(), HasSubstr("cannot be written"));
  EXPECT_TRUE(cues().isEdited());
}

TEST_F(ConsoleShow, EveryPartSpeaksAndTheHallStaysWhole) {
  open();
  openShow();
  cues().choose(1);
  const QRectF before = surface().placeOf(seat(0, 0));
  venue().choose(5);
  arrive();
  settle();
  const AccessNodes nodes = accessTree(window());
  expectSpeaking(nodes);
  EXPECT_NE(withName(nodes, "Cue 1, Doors, by GO, Steady, next"), nullptr);
  const AccessNode* list = withName(nodes, "Cues, Song is chosen");
  ASSERT_NE(list, nullptr);
  EXPECT_TRUE(list->act(QAccessibleActionInterface::increaseAction()));
  EXPECT_EQ(cues().chosen(), 2);
  // Beside the phone, no closer than before.
  EXPECT_LE(surface().placeOf(seat(0, 0)).width(), before.width());
  EXPECT_TRUE(item("venuePhone").isVisible());
}

}  // namespace
}  // namespace halvora
