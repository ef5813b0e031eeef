// SPDX-License-Identifier: Apache-2.0
#include "apps/halvora/spoken_lines.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "tests/adapters/standard/temporary_folder.h"
#include "tests/support/side_by_side.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Whoever waits for a reader ends by this.
constexpr unsigned kLongestSeconds = 60;

/// In a process of its own, which may share the descriptor with others: whether it came to the end.
bool comesToAnEnd(const std::function<void()>& act) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(kLongestSeconds);
    act();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0;
}

std::string line(int number) { return "line " + std::to_string(number) + "\n"; }

class SmallPipe {
 public:
  SmallPipe() {
    EXPECT_EQ(pipe(ends_), 0);
    EXPECT_EQ(fcntl(ends_[1], F_SETPIPE_SZ, 4096), 4096);
  }
  ~SmallPipe() {
    close(ends_[0]);
    close(ends_[1]);
  }
  SmallPipe(const SmallPipe&) = delete;
  SmallPipe& operator=(const SmallPipe&) = delete;

  int inlet() const { return ends_[1]; }
  int outlet() const { return ends_[0]; }
  std::string taken() const {
    fcntl(ends_[0], F_SETFL, O_NONBLOCK);
    std::array<char, 8192> bytes{};
    const ssize_t count = read(ends_[0], bytes.data(), bytes.size());
    return {bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
  }

 private:
  int ends_[2] = {-1, -1};
};

TEST(SpokenLinesThreads, AreSaidSideBySide) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(nowhere, 0);
  SpokenLines spoken(nowhere);
  sideBySide({[&spoken] { spoken.say("halvora: a line\n"); }});
  close(nowhere);
}

TEST(SpokenLines, NobodyWaitsForAPipeThatIsNotRead) {
  const SmallPipe place;
  EXPECT_TRUE(comesToAnEnd([&] {
    SpokenLines spoken(place.inlet());
    for (int at = 0; at < 10'000; ++at) spoken.say(line(at));
    // Those who have the descriptor too wait as they did.
    if ((fcntl(place.inlet(), F_GETFL) & O_NONBLOCK) != 0) _exit(1);
  }));
  const std::string taken = place.taken();
  EXPECT_THAT(taken, StartsWith("line 0\nline 1\n"));
  EXPECT_EQ(taken.back(), '\n');
}

TEST(SpokenLines, WhoReadsAgainIsToldWhatIsMissing) {
  const SmallPipe place;
  SpokenLines spoken(place.inlet());
  const std::string text(1023, 'x');
  for (int at = 0; at < 7; ++at) spoken.say(text + "\n");
  EXPECT_EQ(place.taken().size(), 4096U);
  spoken.say("now\n");
  spoken.say("then\n");
  EXPECT_EQ(place.taken(), "halvora: lines that nobody took: 3\nnow\nthen\n");
}

// Longer than what a pipe takes whole or not at all.
TEST(SpokenLines, ALineThatWasBegunGoesOnBeforeTheNext) {
  const SmallPipe place;
  SpokenLines spoken(place.inlet());
  const std::string text(5000, 'x');
  spoken.say(text + "\n");
  spoken.say("missed\n");
  std::string all = place.taken();
  spoken.say("next\n");
  all += place.taken();
  EXPECT_EQ(all, text + "\nhalvora: lines that nobody took: 1\nnext\n");
}

TEST(SpokenLines, NobodyWaitsForATerminalThatWasStopped) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(master, 0);
  ASSERT_EQ(grantpt(master), 0);
  ASSERT_EQ(unlockpt(master), 0);
  const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(tcflow(terminal, TCOOFF), 0);
  EXPECT_TRUE(comesToAnEnd([&] {
    SpokenLines spoken(terminal);
    for (int at = 0; at < 100; ++at) spoken.say(line(at));
  }));
  // And none that goes on, but is not read.
  ASSERT_EQ(tcflow(terminal, TCOON), 0);
  EXPECT_TRUE(comesToAnEnd([&] {
    SpokenLines spoken(terminal);
    for (int at = 0; at < 100'000; ++at) spoken.say(line(at));
  }));
  close(terminal);
  close(master);
}

TEST(SpokenLines, WhereNobodyWillEverReadNothingIsSaid) {
  SmallPipe place;
  SpokenLines spoken(place.inlet());
  close(place.outlet());
  EXPECT_TRUE(comesToAnEnd([&] {
    signal(SIGPIPE, SIG_IGN);
    for (int at = 0; at < 3; ++at) spoken.say(line(at));
  }));
}

TEST(SpokenLines, AFileHasAllOfIt) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/errors";
  std::ofstream(path) << "before\n";
  const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  SpokenLines spoken(file);
  for (int at = 0; at < 2000; ++at) spoken.say(line(at));
  close(file);
  std::ifstream stream(path);
  const std::string all{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_THAT(all, StartsWith("before\nline 0\nline 1\n"));
  EXPECT_THAT(all, testing::EndsWith("line 1999\n"));
  EXPECT_THAT(all, Not(HasSubstr("nobody took")));
}

}  // namespace
}  // namespace halvora
