// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/picker_rows.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"
#include "halvora/platform/absent.h"
#include "seats/wizard_controller.h"
#include "tests/seats/seat_maker.h"

namespace halvora {
namespace {

SectionSpec sectionNamed(const std::string& name) { return {name, {{"1", {{"1", 1, 1}}}}}; }

struct PickerRowsTest : testing::Test {
  void show(const std::vector<std::string>& names) {
    std::vector<SectionSpec> sections;
    for (const std::string& name : names) sections.push_back(sectionNamed(name));
    SeatSelectorInputs inputs;
    inputs.map = mapOf(sections);
    wizard = std::make_shared<WizardController>(bundle, overlay, FontLookup(), std::move(inputs));
    wizard->viewDidLoad();
    rows.reload(wizard);
  }
  std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (int index = 0; index < rows.rowCount(); ++index) {
      titles.push_back(rows.data(rows.index(index), Qt::DisplayRole).toString().toStdString());
    }
    return titles;
  }

  VirtualBundle bundle{"com.example.empty"};
  StandingOverlay overlay{bundle, absent::images()};
  std::shared_ptr<WizardController> wizard;
  PickerRows rows;
};

using Titles = std::vector<std::string>;

TEST_F(PickerRowsTest, WithoutAWizardThereIsNone) {
  EXPECT_EQ(rows.rowCount(), 0);
  EXPECT_EQ(rows.rowAt(0), -1);
  EXPECT_EQ(rows.indexOf(0), -1);
  rows.setFilter("x");
  EXPECT_EQ(rows.rowCount(), 0);
}

TEST_F(PickerRowsTest, AreTheWizards) {
  show({"North", "South"});
  EXPECT_EQ(titles(), (Titles{"Select section...", "North", "South"}));
  EXPECT_EQ(rows.rowAt(2), 2);
  EXPECT_EQ(rows.rowAt(3), -1);
  EXPECT_EQ(rows.indexOf(3), -1);
  EXPECT_EQ(rows.roleNames().value(Qt::DisplayRole), "title");
  EXPECT_FALSE(rows.data(rows.index(1), Qt::ToolTipRole).isValid());
}

TEST_F(PickerRowsTest, AFilterKeepsThePlaceholderAndWhatContainsIt) {
  show({"North 1", "South 1", "North 2"});
  rows.setFilter("NORTH");
  EXPECT_EQ(titles(), (Titles{"Select section...", "North 1", "North 2"}));
  EXPECT_EQ(rows.rowAt(2), 3);
  EXPECT_EQ(rows.indexOf(3), 2);
  EXPECT_EQ(rows.indexOf(2), -1);
  rows.setFilter("");
  EXPECT_EQ(rows.rowCount(), 4);
}

TEST_F(PickerRowsTest, AFilterMeansAWholeWordBeforeAPartOfOne) {
  show({"Row 112", "12th Row", "Row 12", "12"});
  rows.setFilter("12");
  EXPECT_EQ(rows.bestMatch(), 4);
  rows.setFilter("row 12");
  EXPECT_EQ(rows.bestMatch(), 3);
  show({"Row 112", "12th Row", "Row 12"});
  rows.setFilter("12");
  EXPECT_EQ(rows.bestMatch(), 3);
}

TEST_F(PickerRowsTest, AFilterMeansWhatEqualsItThenWhatBeginsWithItThenTheFirst) {
  show({"A21", "210", "21", "21"});
  rows.setFilter("1");
  EXPECT_EQ(rows.bestMatch(), 1);
  rows.setFilter("2");
  EXPECT_EQ(rows.bestMatch(), 2);
  rows.setFilter("21");
  EXPECT_EQ(rows.bestMatch(), 3);
  rows.setFilter("x");
  EXPECT_EQ(rows.bestMatch(), 0);
  EXPECT_EQ(titles(), (Titles{"Select section..."}));
}

// Each filter is put to the whole list and, letter by letter, to what is left of it.
TEST_F(PickerRowsTest, TypingOnGivesWhatTypingAtOnceDoes) {
  show({"Upper 101", "Upper 110", "Lower 101", "Lower 11", "Upper 11"});
  for (const char* filter : {"upper 11", "1", "lower", "UPPER 1x", "r 1"}) {
    rows.setFilter("");
    rows.setFilter(filter);
    const Titles atOnce = titles();
    const std::int64_t best = rows.bestMatch();
    rows.setFilter("");
    QString typed;
    for (const QChar letter : QString(filter)) {
      typed += letter;
      rows.setFilter(typed);
    }
    EXPECT_EQ(titles(), atOnce) << filter;
    EXPECT_EQ(rows.bestMatch(), best) << filter;
  }
}

TEST_F(PickerRowsTest, ReadAnewTheyHaveNoFilter) {
  show({"North", "South"});
  rows.setFilter("n");
  show({"East"});
  EXPECT_EQ(rows.filter(), "");
  EXPECT_EQ(titles(), (Titles{"Select section...", "East"}));
}

}  // namespace
}  // namespace halvora
