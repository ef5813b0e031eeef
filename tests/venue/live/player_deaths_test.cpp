// SPDX-License-Identifier: Apache-2.0
// A player that is killed at any moment, and what the hall hears of the next one; and the right to
// go first that a player takes where it may. Each player is a process of its own.
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/virtual/virtual_run_loop.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "venue/live/sequence_numbers.h"
#include "venue/live/show_player.h"
#include "venue/live/system_ground.h"

namespace halvora {
namespace {

constexpr int kDeaths = 40;
/// More looks than are reserved at a time, so that deaths fall into every part of it.
constexpr int kMostLooks = 5 * kReservedNumbers / 2;
constexpr int kNumbers = 0xFFFF;

// In the child: plays look after look until it is killed, and writes their numbers.
[[noreturn]] void playUntilKilled(const std::string& journal, int output) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  auto show = std::get<CueList>(
      parseCueList("application: 1\ncues:\n- {name: a, look: {}}\n- {name: b, look: {}}\n", {}));
  VirtualRunLoop loop;
  // Without a queue: each block is on disk before the first number of it is given out.
  auto opened = openSequenceJournal(journal, 1, nullptr);
  auto* const numbers = std::get_if<std::unique_ptr<SequenceNumbers>>(&opened);
  if (numbers == nullptr) _exit(2);
  ShowPlayer player(show, [](int, int) { return std::optional<int>(); }, loop, **numbers,
                    {[output](const Broadcast& packet, bool) {
                       const std::array<std::uint8_t, 2> number = {
                           static_cast<std::uint8_t>(packet.sequence >> 8),
                           static_cast<std::uint8_t>(packet.sequence)};
                       if (write(output, number.data(), number.size()) != 2) _exit(3);
                     },
                     [](const LiveStatus&) {}});
  player.obey("go");
  for (;;) {
    player.obey("go");
    player.obey("back");
  }
}

/// All numbers that one player has given out, whose death comes after so many of them.
std::vector<int> numbersOf(const std::string& journal, int looks) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const pid_t player = fork();
  if (player == 0) playUntilKilled(journal, ends[1]);
  close(ends[1]);
  std::vector<int> numbers;
  std::FILE* const input = fdopen(ends[0], "rb");
  std::array<std::uint8_t, 2> bytes{};
  while (std::fread(bytes.data(), 1, bytes.size(), input) == bytes.size()) {
    numbers.push_back(bytes[0] << 8 | bytes[1]);
    if (static_cast<int>(numbers.size()) == looks) kill(player, SIGKILL);
  }
  std::fclose(input);
  int status = 0;
  waitpid(player, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself with " << WEXITSTATUS(status);
  return numbers;
}

TEST(PlayerDeaths, TheNextPlayerGoesOnAboveTheLastNumberOnTheAir) {
  const TemporaryFolder folder;
  std::mt19937 chance(7);
  int last = 0;
  for (int death = 0; death < kDeaths; ++death) {
    const int looks = std::uniform_int_distribution(1, kMostLooks)(chance);
    const std::vector<int> numbers = numbersOf(folder.path() + "/journal", looks);
    ASSERT_GE(static_cast<int>(numbers.size()), looks);
    for (const int number : numbers) {
      // As phones count: from 65535 on with 1.
      const int ahead = (number - last + kNumbers) % kNumbers;
      ASSERT_GT(ahead, 0) << number << " after " << last << ", death " << death;
      ASSERT_LE(ahead, 2 * kReservedNumbers) << number << " after " << last;
      last = number;
    }
  }
}

TEST(PlayerPriority, GoesFirstWhereItMayAndGivesThatToNobody) {
  const pid_t player = fork();
  if (player == 0) {
    const sched_param urgent{1};
    const sched_param usual{0};
    if (sched_setscheduler(0, SCHED_RR, &urgent) != 0) _exit(2);
    sched_setscheduler(0, SCHED_OTHER, &usual);
    const auto ground = openSystemGround({});
    const bool isFirst = sched_getscheduler(0) == (SCHED_RR | SCHED_RESET_ON_FORK);
    _exit(isFirst ? 0 : 1);
  }
  int status = 0;
  waitpid(player, &status, 0);
  if (WEXITSTATUS(status) == 2) GTEST_SKIP() << "this system lets the test have no priority";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace halvora
