// SPDX-License-Identifier: Apache-2.0
// `halvora live` as a process: killed, ended by a signal, flooded, unheard, and left by its
// terminal.
#include "tests/apps/halvora/live_process.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/apps/halvora/tool_runner.h"
#include "venue/live/osc_message.h"

namespace halvora {
namespace {

using testing::HasSubstr;

/// More than pipes and what is written at a time hold, and far less than a flood.
constexpr std::size_t kAFewPipes = std::size_t{1} << 20;
constexpr std::size_t kFlood = std::size_t{256} << 20;

// By master, colour and mode at their places: noughts stand in other packets too.
bool isBlack(const std::string& line) {
  constexpr std::string_view kKey = "\"packet\":\"";
  constexpr std::size_t kMaster = 2 * 7;
  constexpr std::string_view kNoLight = "0000000001";
  const std::size_t at = line.find(kKey);
  return at != std::string::npos &&
         line.compare(at + kKey.size() + kMaster, kNoLight.size(), kNoLight) == 0;
}

class LiveProcessTest : public testing::Test {
 protected:
  LiveProcessSetup setup(std::vector<std::string> more) const {
    std::vector<std::string> words{file, "--air", "stdout"};
    words.insert(words.end(), more.begin(), more.end());
    return {.words = std::move(words)};
  }

  TestFolder folder;
  const std::string file = folder.write(
      "show.yaml",
      "application: 1\nrepeat: 0.02\ncues:\n- {name: One, look: {mode: 1, colour: \"#ff0000\"}}\n"
      "- {name: Two, look: {mode: 1, colour: \"#00ff00\"}}\n");
  const std::string journal = (folder.path() / "j").string();
};

/// A port that nobody has, and a way to send messages to it.
class OscDesk {
 public:
  OscDesk() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int taken = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    socklen_t size = sizeof address_;
    bind(taken, reinterpret_cast<const sockaddr*>(&address_), size);
    getsockname(taken, reinterpret_cast<sockaddr*>(&address_), &size);
    ::close(taken);
  }
  ~OscDesk() { ::close(socket_); }
  OscDesk(const OscDesk&) = delete;
  OscDesk& operator=(const OscDesk&) = delete;

  std::string port() const { return std::to_string(ntohs(address_.sin_port)); }
  void send(std::string command) const {
    std::string bytes = "/halvora/" + std::move(command);
    bytes.resize((bytes.size() / 4 + 1) * 4);
    bytes += std::string(",\0\0\0", 4);
    sendto(socket_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address_),
           sizeof address_);
  }

 private:
  int socket_;
  sockaddr_in address_{};
};

TEST_F(LiveProcessTest, KilledWithOneThatStandsByTheShowGoesOn) {
  std::vector<std::string> options{"--control", "-", "--journal", journal};
  LiveProcess player(setup(options));
  const auto isKept = [&](const char* what) {
    return [this, what] {
      return std::filesystem::exists(journal + ".place") &&
             contentsOf(journal + ".place").find(what) != std::string::npos;
    };
  };
  ASSERT_TRUE(player.waitFor(isKept("")));
  options.emplace_back("--standby");
  LiveProcess standby(setup(options));
  ASSERT_TRUE(standby.waitForMessage("stands by"));
  for (const char* command : {"go", "go", "back", "go"}) player.tell(command);
  ASSERT_TRUE(player.waitForPackets(7));
  // It is written down a moment after it is on the air.
  ASSERT_TRUE(player.waitFor(isKept("Two")));
  EXPECT_TRUE(standby.packets.empty());
  player.signal(SIGKILL);
  EXPECT_EQ(player.end(), -SIGKILL);
  ASSERT_TRUE(standby.waitForPackets(3));
  EXPECT_GT(numberIn(standby.packets.front()), numberIn(player.packets.back()));
  EXPECT_TRUE(standby.hasSaid("the player is gone; this one goes on"));
  EXPECT_THAT(standby.packets.front(), HasSubstr("FF0001"));
  standby.tell("quit");
  EXPECT_EQ(standby.end(), 0);
}

TEST_F(LiveProcessTest, ASignalEndsItAsQuitDoes) {
  for (const int number : {SIGTERM, SIGINT}) {
    LiveProcess player(setup({"--control", "-", "--journal", journal}));
    player.tell("go");
    ASSERT_TRUE(player.waitForPackets(2));
    player.signal(number);
    EXPECT_EQ(player.end(), 0) << number;
    EXPECT_FALSE(std::filesystem::exists(journal + ".place"));
  }
  // Each gave back what it had not used.
  EXPECT_THAT(contentsOf(journal), testing::EndsWith("reserved 2\n"));
}

// Nothing that is said faster than it can be done keeps another one's word from being heard.
TEST_F(LiveProcessTest, AFloodOfLinesDoesNotDelayPanicByOsc) {
  if (!readsOsc()) GTEST_SKIP() << "built without OSC";
  const OscDesk desk;
  LiveProcess player(setup({"--control", "-", "--osc", desk.port()}));
  player.tell("go");
  ASSERT_TRUE(player.waitForPackets(1));
  std::string flood;
  for (int at = 0; at < 500; ++at) flood += "go\nback\njump\n";
  std::size_t poured = 0;
  while (poured < kAFewPipes) {
    poured += player.pour(flood);
    player.look(0);
  }
  player.packets.clear();
  desk.send("panic");
  const auto hasBlack = [&] { return std::ranges::any_of(player.packets, isBlack); };
  for (poured = 0; !hasBlack() && poured < kFlood;) {
    player.packets.clear();
    poured += player.pour(flood);
    player.look(0);
  }
  EXPECT_LT(poured, kAFewPipes);
}

TEST_F(LiveProcessTest, AFloodOfOscDoesNotDelayPanicByLines) {
  if (!readsOsc()) GTEST_SKIP() << "built without OSC";
  const OscDesk desk;
  LiveProcess player(setup({"--control", "-", "--osc", desk.port()}));
  player.tell("go");
  ASSERT_TRUE(player.waitForPackets(1));
  std::size_t sent = 0;
  const auto floodUntil = [&](std::size_t most, const auto& isSo) {
    for (sent = 0; !isSo() && sent < most; sent += 100) {
      for (int at = 0; at < 50; ++at) {
        desk.send("go");
        desk.send("back");
      }
      player.packets.clear();
      player.look(0);
    }
  };
  floodUntil(20'000, [] { return false; });
  player.tell("panic");
  floodUntil(10'000'000, [&] { return std::ranges::any_of(player.packets, isBlack); });
  // What came in between was taken or dropped by the system; a message a turn at most is done.
  EXPECT_LT(sent, 1'000'000U);
}

// In one pipe what was said first is done first, and then panic.
TEST_F(LiveProcessTest, PanicBehindAPipeOfNonsenseIsObeyed) {
  LiveProcess player(setup({"--control", "-"}));
  player.tell("go");
  ASSERT_TRUE(player.waitForPackets(1));
  std::string nonsense;
  for (int at = 0; at < 4000; ++at)
    nonsense += std::string(static_cast<std::size_t>(at % 97), 'x') + "\n";
  for (std::size_t at = 0; at < nonsense.size(); player.look(0)) {
    at += player.pour(std::string_view(nonsense).substr(at));
  }
  player.tell("panic");
  EXPECT_TRUE(player.waitFor([&] { return std::ranges::any_of(player.packets, isBlack); }));
}

TEST_F(LiveProcessTest, WhereNobodyReadsWhatItSaysTheShowGoesOn) {
  LiveProcessSetup unheard = setup({"--control", "-"});
  unheard.isUnheard = true;
  LiveProcess player(unheard);
  player.tell("go");
  ASSERT_TRUE(player.waitForPackets(1));
  // Each is answered with a line, and the pipe for them holds a few hundred.
  for (int at = 0; at < 4000; ++at) player.tell("jump");
  player.tell("panic");
  EXPECT_TRUE(player.waitFor([&] { return std::ranges::any_of(player.packets, isBlack); }));
}

}  // namespace
}  // namespace halvora
