// SPDX-License-Identifier: Apache-2.0
// A lighting desk's faders through the real daemon, over the loopback: every channel of the
// fixture, over Art-Net and over sACN, down to what the player does.
#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/linux/poll_run_loop.h"
#include "tests/venue/live/private_olad.h"
#include "venue/live/desk_fixture.h"
#include "venue/live/live_session.h"
#include "venue/live/ola_input.h"

namespace halvora {
namespace {

using testing::HasSubstr;

// The daemon's universe is the low digit of the desk's Art-Net address, counted from 0.
constexpr int kArtNetUniverse = 1;
constexpr int kArtNetUniverseOfAddress0 = 16;
constexpr int kSacnUniverse = 2;
/// Only what has failed waits so long.
constexpr Duration kLimit = milliseconds(30000);
constexpr Duration kFrame = milliseconds(20);

CueList threeCues() {
  auto parsed = parseCueList(
      "application: 1\ncues:\n- {name: One, look: {mode: 1}}\n- {name: Two, look: {mode: 1}}\n"
      "- {name: Three, look: {mode: 1}}\n",
      {});
  return std::get<CueList>(std::move(parsed));
}

class OladTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!daemon.whyNot().empty()) GTEST_SKIP() << daemon.whyNot();
  }
  // Listens as `halvora live --ola` does, and waits for the daemon.
  void listen(int universe) {
    input = OlaInput::open(static_cast<unsigned>(universe), loop,
                           {[this](std::span<const std::uint8_t> levels) {
                              heard.assign(levels.begin(), levels.end());
                              heard.resize(kDeskChannels);
                              for (const std::string& line : fixture.take(levels)) {
                                session.obey(line);
                              }
                            },
                            [this](bool isNow) {
                              isThere = isNow;
                              fixture.forget();
                              heard.clear();
                            }},
                           daemon.port());
    ASSERT_TRUE(loop.runUntil([this] { return isThere; }, kLimit)) << "no daemon";
  }
  // The desk repeats its faders until that has come of them.
  bool move(const std::function<bool()>& isDone) {
    Timer repeat(loop, loop.every(kFrame, [this] { send(faders); }));
    return loop.runUntil(isDone, kLimit);
  }
  bool move(DeskChannel channel, std::uint8_t level, LiveState state,
            std::optional<std::size_t> cue) {
    faders[static_cast<std::size_t>(channel)] = level;
    return move([this, state, cue] {
      const LiveStatus now = session.player().status();
      return now.state == state && now.cue == cue;
    });
  }
  // What asks for nothing has come when the desk's own levels are heard.
  void let(DeskChannel channel, std::uint8_t level) {
    faders[static_cast<std::size_t>(channel)] = level;
    ASSERT_TRUE(move([this] { return std::ranges::equal(heard, faders); }));
  }
  void walk();

  PrivateOlad daemon{{kArtNetUniverse, kArtNetUniverseOfAddress0}, kSacnUniverse};
  LoopbackDesk desk;
  std::function<void(std::span<const std::uint8_t>)> send;
  std::array<std::uint8_t, kDeskChannels> faders{};
  PollRunLoop loop;
  PlainNumbers numbers{1};
  const CueList show = threeCues();
  std::vector<std::string> refused;
  LiveSession session{show,
                      [](int, int) { return std::optional<int>(); },
                      loop,
                      numbers,
                      [](const Broadcast& packet) {
                        const auto bytes = encodeBroadcast(packet);
                        return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
                      },
                      LiveReport{[](Duration, const LiveStatus&) {},
                                 [this](const std::string& line) { refused.push_back(line); }}};
  DeskFixture fixture{{"One", "Two", "Three"}};
  std::vector<std::uint8_t> heard;
  bool isThere = false;
  std::unique_ptr<OlaInput> input;
};

void OladTest::walk() {
  using enum LiveState;
  const DeskChannel go = DeskChannel::go;
  const DeskChannel take = DeskChannel::take;
  // What the faders say when a desk is connected asks for nothing.
  ASSERT_NO_FATAL_FAILURE(let(go, 0));
  EXPECT_TRUE(move(go, 255, playing, 0));
  ASSERT_NO_FATAL_FAILURE(let(go, 0));
  EXPECT_TRUE(move(go, 128, playing, 1));
  EXPECT_TRUE(move(DeskChannel::back, 255, playing, 0));
  EXPECT_TRUE(move(DeskChannel::hold, 255, held, 0));
  EXPECT_TRUE(move(DeskChannel::hold, 0, playing, 0));
  EXPECT_TRUE(move(DeskChannel::blackout, 200, blackout, 0));
  EXPECT_TRUE(move(DeskChannel::blackout, 0, playing, 0));
  EXPECT_TRUE(move(DeskChannel::panic, 255, panic, 0));
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::panic, 0));
  EXPECT_EQ(session.player().status().state, panic);
  EXPECT_TRUE(move(DeskChannel::release, 255, held, 0));
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::cue, 3));
  EXPECT_TRUE(move(take, 255, playing, 2));
  EXPECT_THAT(refused, testing::IsEmpty());
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::cue, 9));
  ASSERT_NO_FATAL_FAILURE(let(take, 0));
  faders[static_cast<std::size_t>(take)] = 255;
  ASSERT_TRUE(move([this] { return !refused.empty(); }));
  EXPECT_THAT(refused.front(), HasSubstr("no cue is called \"number 9\""));
}

TEST_F(OladTest, EveryChannelOverArtNet) {
  send = [this](auto levels) { desk.sendArtNet(kArtNetUniverse, levels); };
  ASSERT_NO_FATAL_FAILURE(listen(kArtNetUniverse));
  walk();
}

TEST_F(OladTest, EveryChannelOverSacn) {
  send = [this](auto levels) { desk.sendSacn(kSacnUniverse, levels); };
  ASSERT_NO_FATAL_FAILURE(listen(kSacnUniverse));
  walk();
}

// A desk that counts its Art-Net universes from 0 is not the daemon's universe 1.
TEST_F(OladTest, ArtNetsFirstAddressIsTheDaemonsUniverse16) {
  send = [this](auto levels) { desk.sendArtNet(0, levels); };
  ASSERT_NO_FATAL_FAILURE(listen(kArtNetUniverseOfAddress0));
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::go, 0));
  EXPECT_TRUE(move(DeskChannel::go, 255, LiveState::playing, 0));
}

TEST_F(OladTest, ADaemonThatEndsLeavesTheShowAndIsFoundAgain) {
  send = [this](auto levels) { desk.sendSacn(kSacnUniverse, levels); };
  ASSERT_NO_FATAL_FAILURE(listen(kSacnUniverse));
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::go, 0));
  EXPECT_TRUE(move(DeskChannel::go, 255, LiveState::playing, 0));
  daemon.kill();
  ASSERT_TRUE(loop.runUntil([this] { return !isThere; }, kLimit));
  EXPECT_EQ(session.player().status().state, LiveState::playing);
  daemon.start();
  ASSERT_TRUE(loop.runUntil([this] { return isThere; }, kLimit));
  // The fader is still up, and asks for nothing.
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::back, 0));
  EXPECT_EQ(session.player().status().cue, 0U);
  ASSERT_NO_FATAL_FAILURE(let(DeskChannel::go, 0));
  EXPECT_TRUE(move(DeskChannel::go, 255, LiveState::playing, 1));
}

}  // namespace
}  // namespace halvora
