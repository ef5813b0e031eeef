// SPDX-License-Identifier: Apache-2.0
// No number is on the air that is not on disk, and whoever comes next goes on above it.
#include "venue/live/sequence_numbers.h"

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::unique_ptr<SequenceNumbers> opened(const std::string& path, std::uint16_t first = 1) {
  auto numbers = openSequenceJournal(path, first, nullptr);
  if (const auto* refusal = std::get_if<CommandResult>(&numbers)) {
    ADD_FAILURE() << refusal->error;
    return nullptr;
  }
  return std::get<std::unique_ptr<SequenceNumbers>>(std::move(numbers));
}

CommandResult refused(const std::string& path) {
  auto numbers = openSequenceJournal(path, 1, nullptr);
  auto* refusal = std::get_if<CommandResult>(&numbers);
  return refusal != nullptr ? *refusal : CommandResult{};
}

TEST(SequenceJournal, GoesOnAboveWhatWasUsed) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j").string();
  {
    const auto numbers = opened(path);
    for (int at = 1; at <= 5; ++at) EXPECT_EQ(numbers->next(), at);
  }
  EXPECT_EQ(opened(path)->next(), 6);
  // A beginning below it counts for nothing, and one above it does.
  EXPECT_EQ(opened(path, 3)->next(), 7);
  EXPECT_EQ(opened(path, 500)->next(), 500);
  EXPECT_EQ(opened(path)->next(), 501);
}

TEST(SequenceJournal, AfterACrashItGoesOnAboveAllThatCouldBeOnTheAir) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j").string();
  const auto numbers = opened(path);
  for (int at = 1; at <= 3000; ++at) {
    const std::uint16_t number = numbers->next();
    if (at % 500 != 0) continue;
    // What the disk has while the player lives is what a crash leaves.
    const std::string left = folder.write("crash" + std::to_string(at), contentsOf(path));
    EXPECT_GT(opened(left)->next(), number);
  }
}

TEST(SequenceJournal, ATornLineWasNeverReserved) {
  const TestFolder folder;
  for (const char* torn : {"reserved 77\nreserved 99", "reserved 77\nres", "reserved 77\n"}) {
    EXPECT_EQ(opened(folder.write("j", torn))->next(), 78) << torn;
  }
  EXPECT_EQ(opened(folder.write("j", "reserv"))->next(), 1);
  const std::string path = folder.write("j", "reserved 77\nreserved 99");
  opened(path)->next();
  EXPECT_THAT(contentsOf(path), HasSubstr("reserved 77\nreserved 1101\nreserved 78\n"));
}

// A disk that is full in the middle of a line, and has room again later.
TEST(SequenceJournal, ALineOfWhichOnlyAPartCouldBeWrittenIsTakenBack) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j").string();
  auto numbers = opened(path);
  const auto size = std::filesystem::file_size(path);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit tight{size + 5, before.rlim_max};
  const auto signal = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
  for (int at = 1; at <= 600; ++at) numbers->next();
  EXPECT_THAT(numbers->alarm(), HasSubstr("cannot be written"));
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, signal);
  EXPECT_EQ(std::filesystem::file_size(path), size);
  numbers.reset();
  EXPECT_EQ(opened(path)->next(), 601);
}

TEST(SequenceJournal, ASecondPlayerIsRefused) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j").string();
  {
    const auto numbers = opened(path);
    const CommandResult result = refused(path);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr(path + ": another player has this journal"));
  }
  EXPECT_NE(opened(path), nullptr);
}

TEST(SequenceJournal, RefusesWhatItCannotKeepNumbersIn) {
  const TestFolder folder;
  EXPECT_EQ(refused((folder.path() / "none" / "j").string()).status, 2);
  EXPECT_THAT(refused(folder.path().string()).error, HasSubstr("cannot be written"));
  EXPECT_THAT(refused("/dev/null").error, HasSubstr("not a file"));
  for (const char* other : {"hello\n", "reserved x\n", "reserved 70000\n", "hello"}) {
    const std::string path = folder.write("other", other);
    EXPECT_THAT(refused(path).error, HasSubstr("not a journal")) << other;
    EXPECT_EQ(contentsOf(path), other);
  }
}

TEST(ReservedNumbers, NumbersGoRoundWithoutNought) {
  std::vector<std::uint16_t> kept;
  ReservedNumbers numbers(
      65533,
      [&](std::uint16_t last) {
        kept.push_back(last);
        return true;
      },
      nullptr);
  ASSERT_TRUE(numbers.begin());
  EXPECT_EQ(numbers.next(), 65534);
  EXPECT_EQ(numbers.next(), 65535);
  EXPECT_EQ(numbers.next(), 1);
  EXPECT_THAT(kept, ElementsAre(1022));
}

TEST(ReservedNumbers, TheNextBlockIsReservedInTime) {
  std::vector<std::uint16_t> kept;
  ReservedNumbers numbers(
      0,
      [&](std::uint16_t last) {
        kept.push_back(last);
        return true;
      },
      nullptr);
  ASSERT_TRUE(numbers.begin());
  for (int at = 1; at <= 20000; ++at) {
    const std::uint16_t number = numbers.next();
    ASSERT_LE(number, kept.back());
  }
  EXPECT_EQ(numbers.alarm(), "");
  // The disk is asked once in some hundreds of numbers.
  EXPECT_LE(kept.size(), 21U);
}

TEST(ReservedNumbers, WhereTheDiskFailsTheShowGoesOnWithAnAlarm) {
  bool isGood = true;
  ReservedNumbers numbers(
      0, [&](std::uint16_t) { return isGood; }, nullptr);
  ASSERT_TRUE(numbers.begin());
  isGood = false;
  for (int at = 1; at <= 2000; ++at) EXPECT_EQ(numbers.next(), at);
  EXPECT_THAT(numbers.alarm(), HasSubstr("cannot be written"));
  isGood = true;
  for (int at = 0; at < 1024; ++at) numbers.next();
  EXPECT_EQ(numbers.alarm(), "");
}

// Else the next show would go on below what the hall has heard.
TEST(ReservedNumbers, WhatWasUsedWhileTheDiskFailedIsKeptInTheEnd) {
  std::uint16_t kept = 0;
  bool isGood = true;
  {
    ReservedNumbers numbers(
        0,
        [&](std::uint16_t last) {
          if (isGood) kept = last;
          return isGood;
        },
        nullptr);
    ASSERT_TRUE(numbers.begin());
    isGood = false;
    for (int at = 1; at <= 1300; ++at) numbers.next();
    EXPECT_EQ(kept, 1024);
    isGood = true;
  }
  EXPECT_EQ(kept, 1300);
}

TEST(ReservedNumbers, ADiskThatFailedIsAskedAgainSoon) {
  bool isGood = true;
  ReservedNumbers numbers(
      0, [&](std::uint16_t) { return isGood; }, nullptr);
  ASSERT_TRUE(numbers.begin());
  isGood = false;
  for (int at = 1; at <= 600; ++at) numbers.next();
  EXPECT_NE(numbers.alarm(), "");
  isGood = true;
  for (int at = 0; at < 32; ++at) numbers.next();
  EXPECT_EQ(numbers.alarm(), "");
}

TEST(ReservedNumbers, WithoutAFirstBlockNothingBegins) {
  ReservedNumbers numbers(
      0, [](std::uint16_t) { return false; }, nullptr);
  EXPECT_FALSE(numbers.begin());
}

}  // namespace
}  // namespace halvora
