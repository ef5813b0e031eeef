// SPDX-License-Identifier: Apache-2.0
// An adapter that is slow, is lost and comes back, in virtual time.
#include "venue/live/radio_air.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct AdapterScript {
  std::string failure;
  bool isBusy = false;
  int opened = 0;
  int ended = 0;
  std::vector<std::pair<long long, int>> shown;
};

class ScriptedAdvertiser final : public Advertiser {
 public:
  ScriptedAdvertiser(AdapterScript& script, RunLoop& loop) : script_(script), loop_(loop) {}
  void open(const TransmitterSettings&) override { ++script_.opened; }
  void show(std::span<const std::uint8_t> data) override {
    script_.shown.emplace_back(loop_.now() / milliseconds(1), data[0]);
  }
  void end() override { ++script_.ended; }
  bool isBusy() const override { return script_.isBusy; }
  const std::string& failure() const override { return script_.failure; }

 private:
  AdapterScript& script_;
  RunLoop& loop_;
};

class RadioAirTest : public testing::Test {
 protected:
  void send(int number, bool isRepeat = false) {
    const std::uint8_t data[] = {static_cast<std::uint8_t>(number)};
    air.send(data, isRepeat);
  }
  void run(long long time) { loop.runFor(milliseconds(time)); }

  VirtualRunLoop loop;
  AdapterScript script;
  std::vector<std::string> said;
  RadioAir air{[this] { return std::make_unique<ScriptedAdvertiser>(script, loop); },
               {"hci1", milliseconds(100)},
               loop,
               [this](const std::string& line) { said.push_back(line); }};
};

TEST_F(RadioAirTest, ShowsNewPacketsAndLeavesRepeatsToTheRadio) {
  send(1);
  send(1, true);
  run(200);
  send(2);
  EXPECT_THAT(script.shown, ElementsAre(std::pair(0, 1), std::pair(200, 2)));
  EXPECT_THAT(said, IsEmpty());
}

TEST_F(RadioAirTest, OfFramesThatComeTooFastTheNewestIsKeptAndItIsSaid) {
  for (int frame = 0; frame < 9; ++frame) {
    send(frame);
    run(33);
  }
  run(100);
  EXPECT_THAT(script.shown, ElementsAre(std::pair(0, 0), std::pair(100, 3), std::pair(200, 6),
                                        std::pair(300, 8)));
  EXPECT_EQ(air.leftOut(), 5U);
  EXPECT_THAT(said, ElementsAre(HasSubstr("hci1 does not take packets as fast")));
}

TEST_F(RadioAirTest, ALostAdapterIsAlarmedWithinASecondAndTakenBack) {
  send(1);
  run(1000);
  script.failure = "unplugged";
  run(200);
  EXPECT_THAT(said, ElementsAre(HasSubstr("hci1 is lost: unplugged")));
  EXPECT_EQ(air.failure(), "unplugged");
  send(2);
  run(3000);
  EXPECT_GT(script.opened, 4);
  EXPECT_EQ(said.size(), 1U);
  script.failure.clear();
  send(3);
  run(700);
  EXPECT_THAT(said, ElementsAre(HasSubstr("lost"), HasSubstr("hci1 is back")));
  EXPECT_EQ(script.shown.size(), 2U);
  EXPECT_EQ(script.shown.back().second, 3);
  EXPECT_EQ(air.failure(), "");
}

TEST_F(RadioAirTest, WhatComesBeforeTheAdapterIsReadyIsShownThen) {
  script.isBusy = true;
  send(1);
  send(2);
  run(250);
  EXPECT_THAT(script.shown, IsEmpty());
  script.isBusy = false;
  run(200);
  ASSERT_EQ(script.shown.size(), 1U);
  EXPECT_EQ(script.shown[0].second, 2);
  air.end();
  EXPECT_EQ(script.ended, 1);
}

}  // namespace
}  // namespace halvora
