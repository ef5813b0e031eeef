// SPDX-License-Identifier: Apache-2.0
#include "venue/live/waiting_journal.h"

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

using testing::HasSubstr;

using Opened = std::variant<std::unique_ptr<SequenceNumbers>, CommandResult>;

std::unique_ptr<SequenceNumbers> numbersIn(Opened opened) {
  auto* numbers = std::get_if<std::unique_ptr<SequenceNumbers>>(&opened);
  if (numbers == nullptr) ADD_FAILURE() << std::get<CommandResult>(opened).error;
  return numbers != nullptr ? std::move(*numbers) : nullptr;
}

std::unique_ptr<WaitingJournal> waitingFor(const std::string& path) {
  auto opened = WaitingJournal::open(path);
  auto* journal = std::get_if<std::unique_ptr<WaitingJournal>>(&opened);
  if (journal == nullptr) ADD_FAILURE() << std::get<CommandResult>(opened).error;
  return journal != nullptr ? std::move(*journal) : nullptr;
}

std::string refusalOf(const std::string& path) {
  auto opened = WaitingJournal::open(path);
  const auto* refusal = std::get_if<CommandResult>(&opened);
  if (refusal == nullptr) return "";
  EXPECT_EQ(refusal->status, 2);
  return refusal->error;
}

class WaitingJournalTest : public testing::Test {
 protected:
  TestFolder folder;
  const std::string path = (folder.path() / "j").string();
};

TEST_F(WaitingJournalTest, IsFreeWhenTheOtherPlayerIsGoneAndGoesOnAboveIt) {
  auto player = numbersIn(openSequenceJournal(path, 1, nullptr));
  for (int at = 1; at <= 700; ++at) player->next();
  const auto waiting = waitingFor(path);
  const auto second = waitingFor(path);
  EXPECT_FALSE(waiting->isFree());
  EXPECT_FALSE(waiting->isFree());
  player.reset();
  EXPECT_TRUE(waiting->isFree());
  // Of two that stand by one takes over, and the other one goes on waiting.
  EXPECT_FALSE(second->isFree());
  auto next = numbersIn(waiting->take(nullptr));
  EXPECT_GT(next->next(), 700);
  EXPECT_FALSE(second->isFree());
}

// Standing by for nobody would begin a show by itself.
TEST_F(WaitingJournalTest, RefusesAJournalThatNobodyHas) {
  EXPECT_THAT(refusalOf(path), HasSubstr("cannot be written: No such file"));
  EXPECT_FALSE(std::filesystem::exists(path));
  folder.write("j", "reserved 7\n");
  EXPECT_THAT(refusalOf(path), HasSubstr("no player has this journal"));
  EXPECT_THAT(refusalOf("/dev/null"), HasSubstr("not a file"));
  EXPECT_NE(numbersIn(openSequenceJournal(path, 1, nullptr)), nullptr);
}

// A file that is put in the place of the player's says nothing of that player.
TEST_F(WaitingJournalTest, WaitsForTheFileThatThePlayerHas) {
  const auto player = numbersIn(openSequenceJournal(path, 1, nullptr));
  const auto waiting = waitingFor(path);
  std::filesystem::rename(path, path + ".old");
  folder.write("j", "reserved 7\n");
  EXPECT_FALSE(waiting->isFree());
}

TEST_F(WaitingJournalTest, GoesOnWithAnAlarmWhereTheDiskIsFull) {
  auto player = numbersIn(openSequenceJournal(path, 1, nullptr));
  const auto waiting = waitingFor(path);
  // A death gives nothing back.
  const std::string left = contentsOf(path);
  player.reset();
  folder.write("j", left);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit tight{left.size(), before.rlim_max};
  const auto signal = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
  ASSERT_TRUE(waiting->isFree());
  const auto next = numbersIn(waiting->take(nullptr));
  EXPECT_EQ(next->next(), 1025);
  EXPECT_THAT(next->alarm(), HasSubstr("cannot be written"));
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, signal);
}

TEST_F(WaitingJournalTest, EndsWhereTheFileSaysNoNumberAnyMore) {
  auto player = numbersIn(openSequenceJournal(path, 1, nullptr));
  const auto waiting = waitingFor(path);
  player.reset();
  folder.write("j", "hello\n");
  ASSERT_TRUE(waiting->isFree());
  auto taken = waiting->take(nullptr);
  ASSERT_TRUE(std::holds_alternative<CommandResult>(taken));
  EXPECT_THAT(std::get<CommandResult>(taken).error, HasSubstr("not a journal"));
}

}  // namespace
}  // namespace halvora
