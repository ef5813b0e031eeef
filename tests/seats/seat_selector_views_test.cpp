// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "seats/label_styles.h"
#include "tests/engine/allocation_count.h"
#include "tests/seats/wizard_room.h"

namespace halvora {
namespace {

using testing::ElementsAre;

const std::vector<RowSpec> kRows = {{"Row 1", {{"Seat 1", 1, 1}, {"Seat 2", 2, 1}}}};
const std::vector<SectionSpec> kSections = {{"Standing", kRows}, {"A", kRows}};
constexpr Colour kAccent{0.1F, 0.2F, 0.3F, 1};
constexpr Colour kTitle{0.4F, 0.5F, 0.6F, 1};
constexpr Colour kPaleWhite{1, 1, 1, 0.75F};

TEST(SeatSelectorTexts, AreEnglishWithoutAStringTable) {
  WizardRoom room(kSections);
  auto& wizard = room.load();
  const SeatSelectorViews& views = wizard.views();
  EXPECT_EQ(views.closeButton.title, "Close");
  EXPECT_EQ(views.titleLabel.text, "Select Seat");
  EXPECT_EQ(views.stepLabel.text,
            "We need to know where you're sitting or standing so we can light up your phone in "
            "exactly the right place as part of the interactive light show.");
  EXPECT_EQ(views.standingStageLabel.text, "Stage");
  EXPECT_EQ(views.backButton.title, "Back");
  EXPECT_EQ(views.nextButton.title, "Next");
  EXPECT_EQ(views.selectionSummaryLabel.text, "--  |  --  |  --");

  auto& standing = room.loadAtPlan();
  EXPECT_EQ(standing.views().titleLabel.text, "Select Standing Location");
  EXPECT_EQ(standing.views().stepLabel.text, "Drag the dot to where you're standing in the venue");
  EXPECT_EQ(standing.views().nextButton.title, "Confirm Location");
}

/// Every text of the wizard in the order in which a walk through it shows them.
std::vector<std::string> textsOfAWalk(WizardRoom& room) {
  std::vector<std::string> texts;
  room.inputs.hasLiveVenueSignal = false;
  auto& wizard = room.load();
  const SeatSelectorViews& views = wizard.views();
  texts = {views.closeButton.title,       views.titleLabel.text,      views.stepLabel.text,
           views.standingStageLabel.text, views.backButton.title,     views.nextButton.title,
           wizard.titleForPickerRow(0),   wizard.titleForPickerRow(1)};
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  texts.insert(texts.end(), {wizard.presentedAlert()->title, wizard.presentedAlert()->message,
                             wizard.presentedAlert()->button});
  wizard.pickerDidSelectRow(2);
  wizard.nextTapped();
  texts.push_back(wizard.titleForPickerRow(0));
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  texts.push_back(wizard.titleForPickerRow(0));
  wizard.pickerDidSelectRow(1);
  texts.insert(texts.end(), {views.nextButton.title, views.selectionSummaryLabel.text});

  const SeatSelectorViews& standing = room.loadAtPlan().views();
  texts.insert(texts.end(),
               {standing.titleLabel.text, standing.stepLabel.text, standing.nextButton.title});
  return texts;
}

TEST(SeatSelectorTexts, AreTheStringTablesWhereItHasThem) {
  WizardRoom room(kSections);
  for (const char* key :
       {"close", "title", "title_standing", "description", "drag_hint", "stage", "back", "next",
        "confirm_seat", "confirm_location", "placeholder_section", "placeholder_row",
        "placeholder_seat", "standing_label", "alert_standing_title", "alert_standing_message"}) {
    room.kit.setText(std::string("hv_seat_picker_") + key, std::string("~") + key);
  }
  room.kit.setText("hv_seat_picker_summary_format", "%@/%@/%@");
  room.kit.setText("hv_common_ok", "~ok");
  EXPECT_THAT(textsOfAWalk(room),
              ElementsAre("~close", "~title", "~description", "~stage", "~back", "~next",
                          "~placeholder_section", "~standing_label", "~alert_standing_title",
                          "~alert_standing_message", "~ok", "~placeholder_row", "~placeholder_seat",
                          "~confirm_seat", "A/Row 1/Seat 1", "~title_standing", "~drag_hint",
                          "~confirm_location"));
}

TEST(SeatSelectorTexts, FallBackWhereTheTableIsEmptyOrHasTheKey) {
  WizardRoom plain(kSections);
  WizardRoom room(kSections);
  room.kit.setText("hv_seat_picker_close", "");
  room.kit.setText("hv_seat_picker_next", "hv_seat_picker_next");
  room.kit.setText("hv_seat_picker_summary_format", "");
  EXPECT_EQ(textsOfAWalk(room), textsOfAWalk(plain));
}

TEST(SeatSelectorTexts, ANamelessItemIsNumbered) {
  WizardRoom room({{"A", {{"", {{"S", 1, 1}, {"", 2, 2}}}}}, {"", kRows}});
  auto& wizard = room.load();
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select section...", "A", "Section 2"));
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select row...", "Row 1"));
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  EXPECT_THAT(pickerTitles(wizard), ElementsAre("Select seat...", "S", "Seat 2"));
  EXPECT_EQ(wizard.selectedNameForStep(1), "--") << "a name is all that the summary shows";
  room.kit.setText("hv_seat_picker_fallback_seat_format", "Platz %1$ld");
  EXPECT_EQ(wizard.titleForPickerRow(2), "Platz 2");
}

TEST(SeatSelectorStyle, WithoutInputsIsTheKitsOwn) {
  WizardRoom room(kSections);
  const SeatSelectorViews& views = room.load().views();
  EXPECT_EQ(views.background, kBlack);

  EXPECT_EQ(views.closeButton.titleColour, kSystemBlue);
  EXPECT_EQ(views.closeButton.font, (Font{"", 16, FontWeight::semibold}));
  EXPECT_EQ(views.closeButton.background, std::nullopt);
  EXPECT_TRUE(views.closeButton.enabled);

  EXPECT_EQ(views.titleLabel.font, (Font{"", 18, FontWeight::bold}));
  EXPECT_EQ(views.titleLabel.colour, kWhite);
  EXPECT_EQ(views.stepLabel.font, (Font{"", 14, FontWeight::regular}));
  EXPECT_EQ(views.stepLabel.colour, kPaleWhite);
  EXPECT_EQ(views.stepLabel.lines, 0);
  EXPECT_EQ(views.selectionSummaryLabel.colour, kPaleWhite);
  EXPECT_EQ(views.pickerView.title.font, (Font{"", 31, FontWeight::regular}));

  EXPECT_EQ(views.standingStageLabel.alignment, TextAlignment::center);
  EXPECT_EQ(views.standingStageLabel.background, (Colour{0.82F, 0.12F, 0.12F, 1}));
  EXPECT_EQ(views.standingStageLabel.colour, kWhite);
  EXPECT_EQ(views.standingStageLabel.cornerRadius, 8);
  EXPECT_EQ(views.standingStageLabel.border, (Border{1, {1, 1, 1, 0.28F}}));

  EXPECT_EQ(views.standingDotView.background, (Colour{0.196F, 0.843F, 0.294F, 1}));
  EXPECT_EQ(views.standingDotView.border.colour, kWhite);
  EXPECT_EQ(views.standingDotView.cornerRadius, 12);
  EXPECT_EQ(views.standingDotView.width, 24) << "a circle";

  for (const Button* button : {&views.backButton, &views.nextButton}) {
    EXPECT_EQ(button->background, std::nullopt);
    EXPECT_EQ(button->titleColour, kWhite);
    EXPECT_EQ(button->cornerRadius, 8);
    EXPECT_EQ(button->height, 44);
  }
}

TEST(SeatSelectorStyle, TakesTheInputsColours) {
  WizardRoom room(kSections);
  room.inputs.buttonBackgroundColor = kAccent;
  room.inputs.buttonTitleColor = kTitle;
  const SeatSelectorViews& views = room.load().views();
  EXPECT_EQ(views.closeButton.titleColour, kAccent);
  EXPECT_EQ(views.standingStageLabel.background, kAccent);
  EXPECT_EQ(views.standingStageLabel.colour, kTitle);
  EXPECT_EQ(views.standingDotView.background, kAccent);
  EXPECT_EQ(views.standingDotView.border.colour, kTitle);
  for (const Button* button : {&views.backButton, &views.nextButton}) {
    EXPECT_EQ(button->background, kAccent);
    EXPECT_EQ(button->titleColour, kTitle);
  }
  EXPECT_EQ(views.titleLabel.colour, kWhite);
  EXPECT_EQ(views.stepLabel.colour, kPaleWhite);
}

TEST(SeatSelectorStyle, TakesNamedFontsThatThePhoneHas) {
  WizardRoom room(kSections);
  room.inputs.statusTextFontName = "Avenir";
  room.inputs.buttonTitleFontName = "Futura";
  room.inputs.buttonTitleFontSize = 21;
  room.font = "Avenir";
  const SeatSelectorViews& views = room.load().views();
  EXPECT_EQ(views.titleLabel.font, (Font{"Avenir", 18, FontWeight::regular}));
  EXPECT_EQ(views.stepLabel.font, (Font{"Avenir", 14, FontWeight::regular}));
  EXPECT_EQ(views.closeButton.font, (Font{"Avenir", 16, FontWeight::regular}));
  EXPECT_EQ(views.nextButton.font, (Font{"", 21, FontWeight::regular})) << "there is no Futura";

  room.font = "Futura";
  const SeatSelectorViews& others = room.load().views();
  EXPECT_EQ(others.titleLabel.font, (Font{"", 18, FontWeight::bold})) << "there is no Avenir";
  EXPECT_EQ(others.backButton.font, (Font{"Futura", 21, FontWeight::regular}));
}

TEST(SeatSelectorStyle, FontsNeedAPhoneThatHasSome) {
  EXPECT_EQ(fontNamed("Avenir", 9, FontWeight::bold, nullptr), (Font{"", 9, FontWeight::bold}));
  const auto hasAll = [](std::string_view) { return true; };
  EXPECT_EQ(fontNamed("", 9, FontWeight::bold, hasAll), (Font{"", 9, FontWeight::bold}));
  EXPECT_EQ(fontNamed("A", 9, FontWeight::bold, hasAll), (Font{"A", 9, FontWeight::regular}));
}

TEST(SeatSelectorGeometry, FollowsTheWizardsView) {
  WizardRoom room(kSections);
  const SeatSelectorLayout layout = layoutOf(room.load().views(), {287, 1000});
  EXPECT_EQ(seat_selector::kSideMargin, 16);
  EXPECT_EQ(seat_selector::kTopMargin, 12);
  EXPECT_EQ(seat_selector::kSpacing, 12);
  EXPECT_DOUBLE_EQ(layout.contentWidth, 255);
  EXPECT_DOUBLE_EQ(layout.pickerHeight, 700);
  EXPECT_NEAR(layout.backWidth, 243 / 2.55, 1e-9);
  EXPECT_NEAR(layout.nextWidth, 1.55 * layout.backWidth, 1e-9);
  EXPECT_NEAR(layout.backWidth + 12 + layout.nextWidth, 255, 1e-9);
  EXPECT_EQ(layout.stage, (Rect{0, 0, 255, 64}));
  EXPECT_EQ(layout.dragArea, (Rect{0, 74, 255, 626}));
}

TEST(SeatSelectorGeometry, AnOverlayTakesTheStagesPlace) {
  WizardRoom room(kSections);
  room.inputs.venueId = 7;
  room.main.setResource("HVAssets/Maps/Venue-7/standing-overlay.png", pixmapOf(1, 1, 9, 9, 9));
  const SeatSelectorLayout layout = layoutOf(room.load().views(), {287, 1000});
  EXPECT_EQ(layout.stage, (Rect{0, 0, 255, 0}));
  EXPECT_EQ(layout.dragArea, (Rect{0, 0, 255, 700}));
}

TEST(SeatSelectorGeometry, NothingIsSmallerThanNothing) {
  WizardRoom room(kSections);
  const SeatSelectorLayout layout = layoutOf(room.load().views(), {20, 50});
  EXPECT_EQ(layout.contentWidth, 0);
  EXPECT_EQ(layout.backWidth, 0);
  EXPECT_EQ(layout.nextWidth, 0);
  EXPECT_EQ(layout.dragArea.height, 0);
}

std::vector<SectionSpec> arena(int rows, int seats) {
  std::vector<RowSpec> all;
  for (int row = 0; row < rows; ++row) {
    RowSpec spec{"Row " + std::to_string(row), {}};
    for (int seat = 0; seat < seats; ++seat) {
      spec.seats.push_back({"Seat " + std::to_string(seat), seat, row});
    }
    all.push_back(std::move(spec));
  }
  return {{"A", all}, {"B", kRows}};
}

/// What a walk to a seat took from the heap, and how many texts it asked for. Its short texts and
/// few rows are the same on every map.
std::pair<std::uint64_t, int> costOfAWalk(const std::vector<SectionSpec>& sections) {
  WizardRoom room(sections);
  auto& wizard = room.load();
  const int lookups = room.kit.lookups;
  const AllocationCount count;
  wizard.pickerDidSelectRow(1);
  wizard.nextTapped();
  wizard.pickerDidSelectRow(2);
  wizard.nextTapped();
  wizard.pickerDidSelectRow(3);
  wizard.backTapped();
  wizard.backTapped();
  return {count.allocations(), room.kit.lookups - lookups};
}

TEST(SeatSelectorHundredThousandSeats, CostAnActionNoMoreThanTen) {
  if (!countsAllocations()) GTEST_SKIP();
  const auto few = costOfAWalk(arena(5, 5));
  EXPECT_GT(few.second, 0);
  EXPECT_EQ(costOfAWalk(arena(400, 250)), few);
}

}  // namespace
}  // namespace halvora
