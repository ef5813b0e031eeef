// SPDX-License-Identifier: Apache-2.0
// `halvora live` at a terminal of its own, in a process of its own: what a stray key, a terminal
// that nobody reads and one that is closed do to a show, which is nothing. Nobody waits for time,
// but for a packet, with a bound that only a failure reaches.
#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "adapters/standard/stopwatch.h"
#include "apps/halvora/commands.h"
#include "apps/halvora/interruption.h"
#include "apps/halvora/spoken_lines.h"
#include "apps/halvora/whole_lines.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/venue/plan/word_videos.h"
#include "venue/live/system_ground.h"

namespace halvora {
namespace {

constexpr Duration kLimit = milliseconds(60'000);
constexpr char kStopOutput = 0x13;
constexpr char kSuspend = 0x1A;
constexpr char kQuit = 0x1C;

// As a shell leaves it to a program.
termios usualWay() {
  termios way{};
  way.c_iflag = ICRNL | IXON;
  way.c_oflag = OPOST | ONLCR;
  way.c_cflag = CS8 | CREAD;
  way.c_lflag = ICANON | ECHO | ISIG | IEXTEN;
  way.c_cc[VSTOP] = kStopOutput;
  way.c_cc[VSUSP] = kSuspend;
  way.c_cc[VQUIT] = kQuit;
  way.c_cc[VMIN] = 1;
  cfsetspeed(&way, B38400);
  return way;
}

// As the program's own main does it.
[[noreturn]] void playAtTerminal(const std::vector<std::string>& arguments, int packets) {
  dup2(packets, STDOUT_FILENO);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, SIG_DFL);
  std::vector<const char*> words{"halvora", "live"};
  for (const std::string& word : arguments) words.push_back(word.c_str());
  const PixmapDecoder images;
  const WordVideos videos;
  SpokenLines spoken(STDERR_FILENO);
  Outside outside{images, videos, interruptedBySignals()};
  outside.openLive = [] { return openSystemGround({}); };
  outside.terminal.write = [&spoken](std::string_view text) { spoken.say(text); };
  outside.messages = [&spoken](std::string_view lines) {
    spoken.say(lines);
    return true;
  };
  WholeLines output(STDOUT_FILENO);
  const CommandResult result =
      runCommand(static_cast<int>(words.size()), words.data(), outside,
                 [&output](std::string_view text) { return output.write(text); });
  _exit(result.status);
}

class TerminalPlayer {
 public:
  explicit TerminalPlayer(const std::vector<std::string>& arguments) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const termios usual = usualWay();
    process_ = forkpty(&terminal_, nullptr, &usual, nullptr);
    if (process_ == 0) playAtTerminal(arguments, ends[1]);
    close(ends[1]);
    packets_ = ends[0];
    for (const int own : {packets_, terminal_}) fcntl(own, F_SETFL, O_NONBLOCK);
  }
  ~TerminalPlayer() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      waitpid(process_, nullptr, 0);
    }
    hangUp();
    close(packets_);
  }
  TerminalPlayer(const TerminalPlayer&) = delete;
  TerminalPlayer& operator=(const TerminalPlayer&) = delete;

  /// False where the terminal takes no more keys now.
  bool press(char key) const { return ::write(terminal_, &key, 1) == 1; }
  /// How the terminal is set now.
  termios way() const {
    termios now{};
    EXPECT_EQ(tcgetattr(terminal_, &now), 0);
    return now;
  }
  bool isAsItWas() const {
    const termios now = way();
    const termios usual = usualWay();
    return now.c_lflag == usual.c_lflag && now.c_iflag == usual.c_iflag &&
           std::ranges::equal(now.c_cc, usual.c_cc);
  }
  void signal(int number) const { ::kill(process_, number); }
  void hangUp() {
    if (terminal_ >= 0) close(std::exchange(terminal_, -1));
  }

  /// Takes in the packets that there are, or come soon.
  void look() {
    constexpr int kSoonMs = 10;
    pollfd watched{packets_, POLLIN, 0};
    if (poll(&watched, 1, kSoonMs) <= 0) return;
    std::array<char, 65536> bytes{};
    const ssize_t count = ::read(packets_, bytes.data(), bytes.size());
    if (count > 0) packets.append(bytes.data(), static_cast<std::size_t>(count));
  }
  bool waitFor(const std::function<bool()>& isSo) {
    const Stopwatch watch;
    while (!isSo()) {
      if (watch.elapsed() > kLimit) return false;
      look();
    }
    return true;
  }
  bool waitForMore() {
    packets.clear();
    return waitFor([&] { return std::ranges::count(packets, '\n') >= 3; });
  }
  /// Keys that come before it takes single ones would be a line's.
  bool begin() {
    return waitFor([&] {
      static_cast<void>(press(' '));
      return !packets.empty();
    });
  }
  /// The exit status, or minus the signal that ended it.
  int end() {
    int status = 0;
    if (!waitFor([&] { return waitpid(process_, &status, WNOHANG) == process_; })) return -1000;
    process_ = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }

  std::string packets;

 private:
  pid_t process_ = -1;
  int terminal_ = -1;
  int packets_ = -1;
};

class LiveTerminal : public testing::Test {
 protected:
  /// Whether the last whole packet has no light in it: neither master nor colour, in mode 1.
  bool isBlack() const {
    constexpr std::string_view kKey = "\"packet\":\"";
    constexpr std::size_t kMaster = 2 * 7;
    constexpr std::string_view kNoLight = "0000000001";
    const std::size_t at = player.packets.rfind(kKey, player.packets.rfind('\n'));
    return at != std::string::npos &&
           player.packets.compare(at + kKey.size() + kMaster, kNoLight.size(), kNoLight) == 0;
  }

  TestFolder folder;
  TerminalPlayer player{{folder.write("show.yaml",
                                      "application: 1\nrepeat: 0.02\ncues:\n"
                                      "- {name: One, look: {mode: 1, colour: \"#ff0000\"}}\n"
                                      "- {name: Two, look: {mode: 1, colour: \"#00ff00\"}}\n"),
                         "--air", "stdout"}};
};

TEST_F(LiveTerminal, StrayKeysStopNeitherTheShowNorPanic) {
  ASSERT_TRUE(player.begin());
  EXPECT_TRUE(player.press(kStopOutput));
  EXPECT_TRUE(player.press(kSuspend));
  EXPECT_TRUE(player.press(kQuit));
  // The next change is said before another command is taken.
  EXPECT_TRUE(player.press('b'));
  EXPECT_TRUE(player.waitForMore());
  EXPECT_EQ(player.way().c_cc[VSUSP], _POSIX_VDISABLE);
  EXPECT_TRUE(player.press('p'));
  EXPECT_TRUE(player.waitFor([this] { return isBlack(); }));
}

// Each change is said, and a terminal holds a few thousand lines that nobody reads.
TEST_F(LiveTerminal, ATerminalThatNobodyReadsStopsNeitherTheShowNorPanic) {
  ASSERT_TRUE(player.begin());
  constexpr int kChanges = 10'000;
  int pressed = 0;
  EXPECT_TRUE(player.waitFor([&] {
    player.packets.clear();
    while (pressed < kChanges && player.press(pressed % 2 == 0 ? 'b' : ' ')) ++pressed;
    return pressed == kChanges;
  }));
  EXPECT_TRUE(player.waitFor([this] { return player.press('p'); }));
  EXPECT_TRUE(player.waitFor([this] { return isBlack(); }));
}

TEST_F(LiveTerminal, ATerminalThatIsClosedLeavesTheShow) {
  ASSERT_TRUE(player.begin());
  player.hangUp();
  EXPECT_TRUE(player.waitForMore());
  player.signal(SIGHUP);
  EXPECT_TRUE(player.waitForMore());
  player.signal(SIGTERM);
  EXPECT_EQ(player.end(), 0);
}

// Two signals that come at once are taken at once: who ends the process so leaves a terminal that
// shows what is typed.
TEST_F(LiveTerminal, WhoCannotWaitHasTheTerminalBack) {
  ASSERT_TRUE(player.begin());
  EXPECT_EQ(player.way().c_lflag & (ICANON | ECHO), 0U);
  player.signal(SIGSTOP);
  player.signal(SIGINT);
  player.signal(SIGTERM);
  player.signal(SIGCONT);
  EXPECT_THAT(player.end(), testing::AnyOf(-SIGINT, -SIGTERM));
  EXPECT_TRUE(player.isAsItWas());
}

TEST_F(LiveTerminal, ASignalThatEndsItGivesTheTerminalBack) {
  ASSERT_TRUE(player.begin());
  player.signal(SIGTERM);
  EXPECT_EQ(player.end(), 0);
  EXPECT_TRUE(player.isAsItWas());
}

}  // namespace
}  // namespace halvora
