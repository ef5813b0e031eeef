// SPDX-License-Identifier: Apache-2.0
// What an engine that goes in mid-show gives back to its phone.
#include <memory>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"

namespace halvora {
namespace {

struct EngineEnd : testing::Test {
  void play(const LightLimits& limits) {
    ShowEngineOptions options;
    options.limits = limits;
    engine = std::make_unique<ShowEngine>(phone.platform(), std::move(options));
    engine->viewDidLoad();
    engine->start();
    phone.loop.runFor(milliseconds(1000));
    Broadcast look;
    look.applicationId = 258;
    look.transmitter = 7;
    look.sequence = 1;
    look.master = look.red = 255;
    look.mode = look.ledMode = 1;
    EXPECT_TRUE(phone.bluetooth.advertise(encodeBroadcast(look)));
    phone.loop.runFor(milliseconds(1500));
  }

  const ExactJsonReader json;
  VirtualPhone phone{json};
  std::unique_ptr<ShowEngine> engine;
};

TEST_F(EngineEnd, ALimitedOneLeavesThePhoneAsItWas) {
  const double before = phone.screen.brightness();
  play({.flash = FlashPolicy::limited});
  EXPECT_TRUE(phone.application.isIdleTimerDisabled);
  EXPECT_TRUE(phone.torch.isOn);
  EXPECT_EQ(phone.screen.brightness(), 1);
  engine.reset();
  EXPECT_FALSE(phone.application.isIdleTimerDisabled) << "the screen may sleep again";
  EXPECT_FALSE(phone.torch.isOn);
  EXPECT_EQ(phone.screen.brightness(), before);
}

TEST_F(EngineEnd, NothingOfItIsPendingAndNobodyIsAskedAnyMore) {
  play({});
  engine.reset();
  EXPECT_EQ(phone.loop.pending(), 0U);
  phone.application.becomeActive();
}

}  // namespace
}  // namespace halvora
