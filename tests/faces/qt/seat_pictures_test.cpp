// SPDX-License-Identifier: Apache-2.0
// Pictures of every situation of the panel and every step of the wizard, compared with those in
// tests/faces/qt/pictures. Text is drawn with DejaVu Sans everywhere; versions of its rasteriser
// differ by shades at the edges of letters, which the tolerance lets pass, and a moved line does
// not. To renew the pictures run these tests with HALVORA_RENEW_PICTURES=1, and look at every one.
#include <string>

#include <gtest/gtest.h>

#include "tests/faces/qt/committed_picture.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

constexpr QSize kPanelWindow(360, 290);
constexpr QSize kPhone(360, 640);

void expectPicture(StatusBench& bench, const char* name) {
  bench.settle();
  halvora::expectPicture(bench.picture(), name);
}

StatusBenchSetup panelSetup() {
  StatusBenchSetup setup;
  setup.window = kPanelWindow;
  return setup;
}

StatusBenchSetup wizardSetup() {
  StatusBenchSetup setup;
  setup.window = kPhone;
  return setup;
}

void say(StatusBench& bench, const Bundle& bundle, const char* key) {
  bench.phone.defaults.setFromOutside("bluetoothStatus", bundle.localizedString(key));
  bench.tick();
}

// Panel

TEST(SeatPictures, PanelAsking) {
  StatusBenchSetup setup = panelSetup();
  setup.authorization = BluetoothAuthorization::notDetermined;
  StatusBench bench(setup);
  expectPicture(bench, "panel-asking");
}

TEST(SeatPictures, PanelForbidden) {
  StatusBench bench(panelSetup());
  say(bench, bench.kit, "bluetooth_notAuthorised");
  expectPicture(bench, "panel-forbidden");
}

TEST(SeatPictures, PanelBluetoothOff) {
  StatusBench bench(panelSetup());
  say(bench, bench.kit, "bluetooth_off");
  expectPicture(bench, "panel-off");
}

TEST(SeatPictures, PanelOutside) {
  StatusBenchSetup setup = panelSetup();
  setup.isHeard = false;
  StatusBench bench(setup);
  say(bench, bench.demo, "outside_venue");
  expectPicture(bench, "panel-outside");
}

TEST(SeatPictures, PanelWithoutASeat) {
  StatusBench bench(panelSetup());
  say(bench, bench.demo, "inside_venue");
  expectPicture(bench, "panel-no-seat");
}

TEST(SeatPictures, PanelPreparing) {
  StatusBench bench(panelSetup());
  bench.store({"Section 108", "Row 12", "Seat 7"}, {3, 4});
  say(bench, bench.demo, "inside_venue");
  expectPicture(bench, "panel-preparing");
}

TEST(SeatPictures, PanelReady) {
  StatusBench bench(panelSetup());
  bench.store({"Section 108", "Row 12", "Seat 7"}, {3, 4});
  SeatStorage(bench.phone.defaults).setPersistedSeatLUTReady(true, 7);
  say(bench, bench.demo, "inside_venue");
  expectPicture(bench, "panel-ready");
}

TEST(SeatPictures, PanelLoading) {
  StatusBench bench(panelSetup());
  say(bench, bench.demo, "inside_venue");
  bench.phone.defaults.setFromOutside("venueID", std::int64_t{8});
  bench.panel().preloadSeatMapForVenueId(8);
  bench.panel().updateSeatSelectionUIForVenueId(8);
  expectPicture(bench, "panel-loading");
}

TEST(SeatPictures, PanelWithoutAMap) {
  StatusBenchSetup setup = panelSetup();
  setup.map = "{}";
  StatusBench bench(setup);
  say(bench, bench.demo, "inside_venue");
  bench.turn([&] { bench.panel().openSeatSelector(); });
  expectPicture(bench, "panel-no-map");
}

TEST(SeatPictures, PanelInArabic) {
  StatusBenchSetup setup = panelSetup();
  setup.language = "ar";
  StatusBench bench(setup);
  bench.store({"القسم 108", "الصف 12", "المقعد 7"}, {3, 4});
  say(bench, bench.demo, "inside_venue");
  expectPicture(bench, "panel-arabic");
}

// Wizard

void goOn(StatusBench& bench, std::initializer_list<Qt::Key> keys) {
  for (const Qt::Key key : keys) bench.key(key);
  // As it looks to a user without a keyboard.
  for (const char* name : {"pickerView", "standingDragArea"}) {
    bench.item(name)->setProperty("isKeyed", false);
  }
}

TEST(SeatPictures, WizardSection) {
  StatusBench bench(wizardSetup());
  bench.open();
  expectPicture(bench, "wizard-section");
}

TEST(SeatPictures, WizardRow) {
  StatusBench bench(wizardSetup());
  bench.open();
  goOn(bench, {Qt::Key_End, Qt::Key_Return});
  expectPicture(bench, "wizard-row");
}

TEST(SeatPictures, WizardSeat) {
  StatusBench bench(wizardSetup());
  bench.open();
  goOn(bench, {Qt::Key_End, Qt::Key_Return, Qt::Key_Down, Qt::Key_Return, Qt::Key_Down,
               Qt::Key_Down, Qt::Key_Down});
  expectPicture(bench, "wizard-seat");
}

TEST(SeatPictures, WizardFilter) {
  StatusBench bench(wizardSetup());
  bench.open();
  bench.type("21");
  bench.item("seatFilter")->setProperty("cursorVisible", false);
  expectPicture(bench, "wizard-filter");
}

TEST(SeatPictures, WizardPlan) {
  StatusBench bench(wizardSetup());
  bench.open();
  goOn(bench, {Qt::Key_Down, Qt::Key_Return});
  expectPicture(bench, "wizard-plan");
}

TEST(SeatPictures, WizardStage) {
  StatusBenchSetup setup = wizardSetup();
  setup.map = mapWithStanding();
  StatusBench bench(setup);
  bench.open();
  goOn(bench, {Qt::Key_Down, Qt::Key_Return});
  expectPicture(bench, "wizard-stage");
}

TEST(SeatPictures, WizardAwayFromTheVenue) {
  StatusBenchSetup setup = wizardSetup();
  setup.isHeard = false;
  setup.properties = "defaultVenueId: 7";
  StatusBench bench(setup);
  bench.open();
  goOn(bench, {Qt::Key_Down, Qt::Key_Return});
  expectPicture(bench, "wizard-away");
}

TEST(SeatPictures, WizardByKeyboard) {
  StatusBench bench(wizardSetup());
  bench.open();
  bench.key(Qt::Key_End);
  expectPicture(bench, "wizard-keyboard");
}

TEST(SeatPictures, WizardInArabic) {
  StatusBenchSetup setup = wizardSetup();
  setup.language = "ar";
  StatusBench bench(setup);
  bench.open();
  goOn(bench, {Qt::Key_End, Qt::Key_Return, Qt::Key_Down});
  expectPicture(bench, "wizard-arabic");
}

TEST(SeatPictures, WizardWithLargeTexts) {
  StatusBenchSetup setup = wizardSetup();
  setup.textScale = 1.6;
  StatusBench bench(setup);
  bench.open();
  goOn(bench, {Qt::Key_End});
  expectPicture(bench, "wizard-large");
}

TEST(SeatPictures, WizardInALargeWindow) {
  StatusBenchSetup setup = wizardSetup();
  setup.window = {900, 640};
  StatusBench bench(setup);
  bench.open();
  goOn(bench, {Qt::Key_End});
  expectPicture(bench, "wizard-window");
}

}  // namespace
}  // namespace halvora
