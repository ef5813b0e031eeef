// SPDX-License-Identifier: Apache-2.0
// What the audience is asked and may decide, and what becomes of the light.
#include <cstdint>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/broadcast.h"
#include "engine/inside.h"
#include "halvora/audience.h"
#include "halvora/platform/battery.h"

namespace halvora {
namespace {

struct FakeBattery final : Battery {
  std::optional<BatteryState> state() const override { return told; }
  std::optional<BatteryState> told;
};

struct AudienceTest : testing::Test {
  AudienceTest() {
    platform.battery = battery;
    engine.viewDidLoad();
    engine.start();
    pass(milliseconds(1000));
  }
  HalvoraAudienceController& make(AudienceFields fields = {}) {
    audience = std::make_unique<HalvoraAudienceController>(engine, platform, fields,
                                                           [this] { ++changes; });
    return *audience;
  }
  /// A look with a lit torch and the motor on the air, and the time that it takes to be there.
  void show(std::uint8_t mode = 1) {
    Broadcast look;
    look.applicationId = 258;
    look.transmitter = 7;
    look.venueId = 7;
    look.sequence = ++sequence;
    look.master = 255;
    look.mode = mode;
    look.red = 255;
    look.ledMode = 1;
    EXPECT_TRUE(phone.bluetooth.advertise(encodeBroadcast(look)));
    pass(milliseconds(1500));
  }
  void pass(Duration time) { EXPECT_TRUE(phone.loop.runFor(time)); }
  double red() { return insideOf(engine).shownScreen().red; }

  ExactJsonReader json;
  VirtualPhone phone{json};
  HalvoraViewController engine{phone.platform()};
  Platform platform = phone.platform();
  FakeBattery battery;
  std::unique_ptr<HalvoraAudienceController> audience;
  int changes = 0;
  std::uint16_t sequence = 0;
};

TEST_F(AudienceTest, NothingOfAShowIsSeenBeforeItIsJoined) {
  make();
  EXPECT_EQ(audience->stage(), AudienceStage::asked);
  EXPECT_EQ(audience->views().title.text, "This show contains flashing light");
  EXPECT_FALSE(audience->views().title.hidden);
  show();
  EXPECT_EQ(red(), 0);
  EXPECT_FALSE(phone.torch.isOn);
  EXPECT_FALSE(audience->isInShow());
  audience->join();
  pass(milliseconds(300));
  EXPECT_EQ(red(), 1);
  EXPECT_TRUE(phone.torch.isOn);
  EXPECT_TRUE(audience->views().title.hidden);
  EXPECT_TRUE(audience->isInShow());
}

TEST_F(AudienceTest, AHostThatDoesNotAskHasThemIn) {
  make({.asksBeforeJoining = false});
  EXPECT_EQ(audience->stage(), AudienceStage::joined);
  show();
  EXPECT_EQ(red(), 1);
}

TEST_F(AudienceTest, LeavingTakesTheLightWithin300Milliseconds) {
  make().join();
  show();
  const int before = changes;
  audience->leave();
  EXPECT_GT(changes, before);
  EXPECT_FALSE(phone.torch.isOn);
  pass(milliseconds(300));
  EXPECT_EQ(red(), 0);
  EXPECT_EQ(audience->stage(), AudienceStage::left);
  EXPECT_EQ(audience->views().joinButton.title, "Resume");
  EXPECT_EQ(audience->views().stayOutButton.title, "Stay Out");
  audience->join();
  pass(milliseconds(300));
  EXPECT_EQ(red(), 1);
  EXPECT_TRUE(phone.torch.isOn);
}

TEST_F(AudienceTest, WhoStaysOutIsAskedNothingAndMayComeBack) {
  make().join();
  show();
  audience->leave();
  audience->stayOut();
  EXPECT_TRUE(audience->views().title.hidden);
  EXPECT_TRUE(audience->views().joinButton.hidden);
  EXPECT_FALSE(audience->views().comeBackButton.hidden);
  show();
  EXPECT_EQ(red(), 0);
  audience->join();
  pass(milliseconds(300));
  EXPECT_EQ(red(), 1);
}

TEST_F(AudienceTest, WhoStayedOutFindsTheWayBackOnAPageThatIsMadeAnew) {
  make({.asksBeforeJoining = false}).leave();
  audience->stayOut();
  audience.reset();
  make({.asksBeforeJoining = false});
  EXPECT_EQ(audience->stage(), AudienceStage::out);
  EXPECT_FALSE(audience->views().comeBackButton.hidden);
  audience->join();
  show();
  EXPECT_EQ(red(), 1);
}

TEST_F(AudienceTest, OnlyWhoIsInCanLeave) {
  make();
  audience->leave();
  EXPECT_EQ(audience->stage(), AudienceStage::asked);
  audience->stayOut();
  audience->leave();
  EXPECT_EQ(audience->stage(), AudienceStage::out);
}

TEST_F(AudienceTest, GentleLightHoldsAtOnceAndForGood) {
  make().join();
  show();
  EXPECT_EQ(phone.screen.brightness(), 1);
  const int before = changes;
  audience->setGentle(true);
  EXPECT_EQ(changes, before + 1);
  pass(milliseconds(100));
  EXPECT_EQ(engine.viewerLimits(), kGentleLight);
  EXPECT_EQ(phone.screen.brightness(), 0.6);
  EXPECT_FALSE(phone.torch.isOn);
  audience.reset();
  engine.setViewerLimits({});
  make();
  EXPECT_TRUE(audience->isGentle());
  EXPECT_EQ(engine.viewerLimits(), kGentleLight);
  audience->setGentle(false);
  EXPECT_EQ(engine.viewerLimits(), LightLimits{});
  audience.reset();
  make();
  EXPECT_FALSE(audience->isGentle());
}

TEST_F(AudienceTest, TheSystemsWishOnlyTightens) {
  make({.reducesFlashing = true});
  EXPECT_EQ(engine.viewerLimits(), LightLimits{.flash = FlashPolicy::limited});
  audience->setGentle(true);
  EXPECT_EQ(engine.viewerLimits(), kGentleLight);
  audience->setFields({.reducesFlashing = false});
  EXPECT_EQ(engine.viewerLimits(), kGentleLight);
}

TEST_F(AudienceTest, WhatTheHostSetsLaterHoldsAtOnce) {
  make();
  audience->setFields({.reducesFlashing = true, .textColour = kBlack});
  EXPECT_EQ(engine.viewerLimits(), LightLimits{.flash = FlashPolicy::limited});
  EXPECT_EQ(audience->views().title.colour, kBlack);
  EXPECT_EQ(audience->stage(), AudienceStage::asked);
  audience->setFields({.asksBeforeJoining = false});
  EXPECT_EQ(audience->stage(), AudienceStage::joined) << "nobody is to be asked any more";
  EXPECT_EQ(engine.viewerLimits(), LightLimits{});
  audience->leave();
  audience->setFields({.asksBeforeJoining = false});
  EXPECT_EQ(audience->stage(), AudienceStage::left) << "who went is not brought back";
}

TEST_F(AudienceTest, TheChoiceOfGentleLightIsKeptAtOnce) {
  make();
  const auto before = phone.defaults.synchronisations;
  audience->setGentle(true);
  EXPECT_EQ(phone.defaults.synchronisations, before + 1);
  audience->setGentle(true);
  EXPECT_EQ(phone.defaults.synchronisations, before + 1) << "it was chosen already";
}

TEST_F(AudienceTest, WordsAndButtonsAreAsLargeAndAsClearInEveryStage) {
  const auto expectWords = [](const StatusText& label, double size, FontWeight weight) {
    EXPECT_EQ(label.font, (Font{"", size, weight})) << label.text;
    EXPECT_EQ(label.colour, kBlack) << label.text;
    EXPECT_FALSE(label.text.empty());
  };
  const auto expectButton = [](const Button& button, Colour ground, Colour title) {
    EXPECT_EQ(button.font, (Font{"", 17, FontWeight::regular})) << button.title;
    EXPECT_EQ(button.height, 48) << "a finger's width";
    EXPECT_EQ(button.cornerRadius, 8);
    EXPECT_EQ(button.background, ground) << button.title;
    EXPECT_EQ(button.titleColour, title) << button.title;
    EXPECT_FALSE(button.title.empty());
  };
  make({.textColour = kBlack, .actionButtonColour = kWhite, .actionButtonTitleColour = kBlack});
  for (const AudienceStage stage :
       {AudienceStage::asked, AudienceStage::joined, AudienceStage::left, AudienceStage::out}) {
    if (stage == AudienceStage::joined) audience->join();
    if (stage == AudienceStage::left) audience->leave();
    if (stage == AudienceStage::out) audience->stayOut();
    ASSERT_EQ(audience->stage(), stage);
    const AudienceViews& views = audience->views();
    expectWords(views.title, 24, FontWeight::bold);
    expectWords(views.message, 16, FontWeight::regular);
    expectWords(views.batteryLabel, 15, FontWeight::semibold);
    expectWords(views.gentleLabel, 17, FontWeight::semibold);
    expectWords(views.gentleNote, 14, FontWeight::regular);
    const Colour quiet = colourOfBytes(94, 94, 102);
    expectButton(views.joinButton, kWhite, kBlack);
    expectButton(views.stayOutButton, quiet, kWhite);
    expectButton(views.leaveButton, quiet, kWhite);
    expectButton(views.comeBackButton, quiet, kWhite);
  }
}

TEST_F(AudienceTest, KeysAndTapsMeanTheShowWhileThereIsOne) {
  make().join();
  EXPECT_FALSE(audience->isInShow());
  EXPECT_TRUE(audience->views().leaveButton.hidden);
  show();
  EXPECT_TRUE(audience->isInShow());
  EXPECT_FALSE(audience->views().leaveButton.hidden);
  show(0);
  EXPECT_FALSE(audience->isInShow());
  show();
  EXPECT_TRUE(audience->isInShow());
  // The venue is left, and nobody says so.
  pass(milliseconds(60'000));
  EXPECT_FALSE(audience->isInShow());
}

TEST_F(AudienceTest, ALowBatteryIsSaidWhereTheQuestionIs) {
  battery.told = BatteryState{0.5, false};
  make();
  EXPECT_TRUE(audience->views().batteryLabel.hidden);
  battery.told = BatteryState{0.19, false};
  pass(HalvoraAudienceController::kBetweenBatteryLooks);
  EXPECT_TRUE(audience->isBatteryLow());
  EXPECT_FALSE(audience->views().batteryLabel.hidden);
  battery.told = BatteryState{0.19, true};
  pass(HalvoraAudienceController::kBetweenBatteryLooks);
  EXPECT_FALSE(audience->isBatteryLow());
  battery.told = BatteryState{HalvoraAudienceController::kLowBattery, false};
  pass(HalvoraAudienceController::kBetweenBatteryLooks);
  EXPECT_TRUE(audience->views().batteryLabel.hidden);
  battery.told.reset();
  pass(HalvoraAudienceController::kBetweenBatteryLooks);
  EXPECT_FALSE(audience->isBatteryLow());
}

TEST_F(AudienceTest, ABatteryThatRunsLowInMidShowIsToldOf) {
  battery.told = BatteryState{0.5, false};
  make().join();
  show();
  const int before = changes;
  battery.told = BatteryState{0.1, false};
  pass(HalvoraAudienceController::kBetweenBatteryLooks);
  EXPECT_EQ(changes, before + 1);
  pass(HalvoraAudienceController::kBetweenBatteryLooks * 3);
  EXPECT_EQ(changes, before + 1);
}

TEST_F(AudienceTest, MayBeDestroyedByWhoeverHearsOfAChange) {
  audience = std::make_unique<HalvoraAudienceController>(engine, platform, AudienceFields{},
                                                         [this] { audience.reset(); });
  ASSERT_NE(audience, nullptr) << "nobody had it yet when it was made";
  audience->join();
  EXPECT_EQ(audience, nullptr);
}

TEST(AudienceWithoutEngine, AsksAndDoesNothing) {
  ExactJsonReader json;
  VirtualPhone phone(json);
  auto engine = std::make_unique<HalvoraViewController>(phone.platform());
  engine->viewDidLoad();
  HalvoraAudienceController audience(*engine, phone.platform());
  engine.reset();
  audience.setGentle(true);
  audience.join();
  EXPECT_EQ(audience.stage(), AudienceStage::joined);
  EXPECT_FALSE(audience.isInShow());
  EXPECT_TRUE(phone.loop.runFor(milliseconds(2000)));
}

}  // namespace
}  // namespace halvora
