// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"

namespace halvora {
namespace {

constexpr Duration kStartUp = milliseconds(10'000);
constexpr Duration kTenMinutes = milliseconds(600'000);

std::uint64_t turnsOfTenMinutes(VirtualPhone& phone) {
  const std::uint64_t before = phone.loop.turns();
  phone.loop.runFor(kTenMinutes);
  return phone.loop.turns() - before;
}

TEST(Idle, PhoneInAVenueWithoutAShowWakesOnlyForItsNamedTimers) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  ShowEngine engine(phone.platform());
  engine.viewDidLoad();
  engine.start();
  phone.loop.runFor(kStartUp);
  // The scan cycle and the range reset once a second, the low-light poll twice.
  EXPECT_EQ(turnsOfTenMinutes(phone), 2400U);
}

TEST(Idle, PhoneThatIsNotAllowedToListenWakesOnlyForTheLowLightPoll) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  phone.bluetooth.setAuthorization(BluetoothAuthorization::denied);
  ShowEngine engine(phone.platform());
  engine.viewDidLoad();
  engine.start();
  phone.loop.runFor(kStartUp);
  EXPECT_EQ(turnsOfTenMinutes(phone), 1200U);
}

TEST(Idle, PhoneIsAsQuietAfterAShowAsBeforeIt) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  ShowEngine engine(phone.platform());
  engine.viewDidLoad();
  engine.start();
  phone.loop.runFor(kStartUp);
  Broadcast look;
  look.applicationId = 258;
  look.transmitter = 7;
  look.gobo = 3;
  for (const int mode : {6, 14, 11, 12, 0}) {
    look.mode = static_cast<std::uint8_t>(mode);
    look.ledMode = look.mode;
    ++look.sequence;
    const BroadcastBytes data = encodeBroadcast(look);
    EXPECT_TRUE(phone.bluetooth.advertise({std::span<const std::uint8_t>(data)}));
    phone.loop.runFor(milliseconds(2000));
  }
  // Seven empty cycles drop the show; a slow fade and the way down of the brightness end too.
  phone.loop.runFor(milliseconds(60'000));
  EXPECT_EQ(turnsOfTenMinutes(phone), 2400U);
}

TEST(Idle, NothingWakesThePhoneOnceTheEngineIsGone) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  {
    ShowEngine engine(phone.platform());
    engine.viewDidLoad();
    engine.start();
    phone.loop.runFor(kStartUp);
  }
  EXPECT_EQ(turnsOfTenMinutes(phone), 0U);
}

}  // namespace
}  // namespace halvora
