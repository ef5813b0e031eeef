// SPDX-License-Identifier: Apache-2.0
// A seat by a line of the ticket: the wizard stands where there is something left to choose.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/seats/wizard_room.h"

namespace halvora {
namespace {

const std::vector<SectionSpec> kHall = {
    {"Block 1", {{"Row 1", {{"Seat 1", 1, 1}, {"Seat 2", 2, 1}}}, {"Row 2", {{"Seat 1", 1, 2}}}}},
    {"Standing Pit", {{"Row 1", {{"Seat 1", 5, 5}}}}}};

TEST(WizardFind, AWholeTicketIsOneStepFromItsEnd) {
  WizardRoom room(kHall);
  auto& wizard = room.load();
  EXPECT_TRUE(wizard.findSeat("block 1 row 1 seat 2"));
  EXPECT_EQ(stateOf(wizard), (WizardState{2, 1, 0, 1})) << "standing sections come first";
  wizard.nextTapped();
  ASSERT_EQ(room.chosen.size(), 1U);
  EXPECT_EQ(room.chosen.front(), (Chosen{"Block 1", "Row 1", "Seat 2", 2, 1}));
}

TEST(WizardFind, ASectionAndARowLeaveTheSeat) {
  WizardRoom room(kHall);
  auto& wizard = room.load();
  EXPECT_TRUE(wizard.findSeat("block 1 row 2"));
  EXPECT_EQ(stateOf(wizard), (WizardState{2, 1, 1, -1}));
}

TEST(WizardFind, ASectionAloneLeavesTheRow) {
  WizardRoom room(kHall);
  auto& wizard = room.load();
  EXPECT_TRUE(wizard.findSeat("block 1"));
  EXPECT_EQ(stateOf(wizard), (WizardState{1, 1, -1, -1}));
}

TEST(WizardFind, WhatIsNotThereChangesNothing) {
  WizardRoom room(kHall);
  auto& wizard = room.load();
  const auto before = stateOf(wizard);
  EXPECT_FALSE(wizard.findSeat("block 9 row 1 seat 1"));
  EXPECT_EQ(stateOf(wizard), before);
  room.inputs.map = nullptr;
  EXPECT_FALSE(room.load().findSeat("block 1"));
}

}  // namespace
}  // namespace halvora
