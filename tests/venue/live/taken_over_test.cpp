// SPDX-License-Identifier: Apache-2.0
// A show that is edited while it is played: what runs goes on as it was, and what comes is new.
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "venue/live/show_player.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TakenOverTest : public testing::Test {
 protected:
  std::unique_ptr<CueList> listOf(const std::string& cues) {
    auto parsed = parseCueList("application: 1\ncues:\n" + cues, {});
    EXPECT_TRUE(std::holds_alternative<CueList>(parsed)) << cues;
    return std::make_unique<CueList>(std::get<CueList>(std::move(parsed)));
  }
  void begin(const std::string& cues) {
    show = listOf(cues);
    player.emplace(
        *show, [](int, int) { return std::optional(12); }, loop, numbers,
        PlayerEnds{[this](const Broadcast& packet, bool isRepeat) {
                     if (isRepeat) return;
                     sent.push_back(std::to_string(loop.now() / milliseconds(1)) + ":" +
                                    std::to_string(packet.speed) + "/" +
                                    std::to_string(packet.master));
                   },
                   [](const LiveStatus&) {}});
  }
  // The list before is gone by then.
  void takeOver(const std::string& cues, std::optional<std::size_t> cue) {
    auto next = listOf(cues);
    player->takeOver(*next, cue);
    show = std::move(next);
  }
  void run(long long time) { loop.runFor(milliseconds(time)); }

  VirtualRunLoop loop;
  PlainNumbers numbers{1};
  std::unique_ptr<CueList> show;
  std::vector<std::string> sent;
  std::optional<ShowPlayer> player;
};

TEST_F(TakenOverTest, AFadeGoesOnAsItWasAndTheNextGoIsTheNewCue) {
  begin("- {name: a, fade: 0.4, look: {speed: 1, master: 200}}\n- {name: b, look: {speed: 2}}\n");
  player->obey("go");
  run(150);
  takeOver("- {name: a, look: {speed: 9, master: 10}}\n- {name: c, look: {speed: 3}}\n", 0);
  run(1000);
  EXPECT_THAT(sent, ElementsAre("0:1/50", "100:1/100", "200:1/150", "300:1/200"));
  player->obey("go");
  player->obey("back");
  EXPECT_EQ(sent.at(4), "1150:3/255");
  EXPECT_EQ(sent.at(5), "1150:9/10");
}

TEST_F(TakenOverTest, TimesThatAreStillToComeAreTheNewOnes) {
  const std::string first = "- {name: a, at: 0, look: {speed: 1}}\n";
  begin(first + "- {name: b, at: 1, look: {speed: 2}}\n");
  player->obey("go");
  run(100);
  takeOver(first + "- {name: b, at: 3, look: {speed: 2}}\n", 0);
  EXPECT_EQ(player->untilNext(), milliseconds(2900));
  run(5000);
  EXPECT_THAT(sent, ElementsAre("0:1/255", "3000:2/255"));
}

TEST_F(TakenOverTest, NothingComesOnTheAirBecauseATimeWasMovedIntoThePast) {
  const std::string first = "- {name: a, at: 0, look: {speed: 1}}\n";
  begin(first + "- {name: b, at: 9, look: {speed: 2}}\n- {name: c, at: 9.5, look: {}}\n");
  player->obey("go");
  run(4000);
  takeOver(first + "- {name: b, at: 2, look: {speed: 2}}\n- {name: c, at: 3, look: {}}\n", 0);
  EXPECT_FALSE(player->untilNext());
  player->obey("hold");
  run(100);
  player->obey("resume");
  run(5000);
  EXPECT_THAT(sent, ElementsAre("0:1/255"));
  player->obey("go");
  run(5000);
  EXPECT_THAT(sent, ElementsAre("0:1/255", "9100:2/255", "10100:0/255"));
}

TEST_F(TakenOverTest, PanicStaysAndBeforeTheFirstGoNothingIsOnTheAir) {
  begin("- {name: a, look: {speed: 1}}\n");
  takeOver("- {name: x, look: {speed: 7}}\n- {name: y, look: {speed: 8}}\n", std::nullopt);
  run(500);
  EXPECT_THAT(sent, IsEmpty());
  player->obey("go");
  player->obey("panic");
  sent.clear();
  takeOver("- {name: z, look: {speed: 9}}\n- {name: x, look: {speed: 5}}\n", 1);
  run(100);
  EXPECT_THAT(sent, IsEmpty());
  EXPECT_EQ(player->status().state, LiveState::panic);
  EXPECT_EQ(player->status().cue, 1U);
  player->obey("release");
  EXPECT_THAT(sent, ElementsAre("600:7/255"));
}

}  // namespace
}  // namespace halvora
