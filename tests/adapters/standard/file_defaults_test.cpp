// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/file_defaults.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "tests/support/passed_files.h"
#include "text/defaults_values.h"

namespace halvora {
namespace {

const std::string kPath = "/data/app/defaults.json";
const std::string kDamaged = kPath + ".damaged";

/// Counts what is written to files in memory, and throws when it is told to.
class CountingFiles final : public PassedFiles {
 public:
  using PassedFiles::PassedFiles;
  bool replace(const std::string& path, std::string_view bytes) override {
    ++attempts;
    if (onAttempt) onAttempt();
    if (throws) throw std::bad_alloc();
    return PassedFiles::replace(path, bytes);
  }
  bool replaceLastingly(const std::string& path, std::string_view bytes) override {
    ++lasting;
    return replace(path, bytes);
  }

  std::size_t attempts = 0;
  std::size_t lasting = 0;
  bool throws = false;
  std::function<void()> onAttempt;
};

class FileDefaultsTest : public testing::Test {
 protected:
  std::unique_ptr<FileDefaults> open() {
    return std::make_unique<FileDefaults>(kPath, FileDefaults::Needs{files, json, loop, queues});
  }
  /// What a process that starts now would read, this one still running.
  std::int64_t savedNumber(const std::string& key) {
    VirtualFiles copy;
    if (const auto bytes = files.read(kPath, SIZE_MAX)) copy.put(kPath, *bytes);
    const FileDefaults other(kPath, {copy, json, loop, queues});
    return integerForKey(other, key);
  }
  std::string bytes(const std::string& path) { return files.read(path, SIZE_MAX).value_or("none"); }

  VirtualFiles files;
  ExactJsonReader json;
  VirtualRunLoop loop;
  VirtualQueues queues{loop};
};

TEST_F(FileDefaultsTest, BeginsEmptyWithoutAFileAndMakesNone) {
  { EXPECT_EQ(open()->find("key"), nullptr); }
  EXPECT_FALSE(files.attributes(kPath));
  EXPECT_TRUE(files.writes.entries.empty());
}

TEST_F(FileDefaultsTest, AWriteIsReadAtOnce) {
  const auto defaults = open();
  defaults->set("key", std::int64_t{5});
  EXPECT_EQ(integerForKey(*defaults, "key"), 5);
  defaults->set("key", std::string("text"));
  EXPECT_EQ(textForKey(*defaults, "key"), "text");
  defaults->remove("key");
  EXPECT_EQ(defaults->find("key"), nullptr);
}

TEST_F(FileDefaultsTest, NoWriteTouchesAFileOnTheMainThread) {
  const auto defaults = open();
  defaults->set("key", std::int64_t{5});
  defaults->synchronize();
  EXPECT_TRUE(files.writes.entries.empty());
  loop.runFor({});
  EXPECT_TRUE(files.writes.entries.empty()) << "background work runs when a turn ends";
  loop.soon([] {});
  loop.runFor({});
  EXPECT_EQ(files.writes.entries.size(), 1U);
}

TEST_F(FileDefaultsTest, SynchronisedValuesAreSavedInTheSameTurn) {
  const auto defaults = open();
  loop.soon([&] {
    defaults->set("key", std::int64_t{5});
    defaults->synchronize();
  });
  loop.runFor({});
  EXPECT_EQ(savedNumber("key"), 5);
}

TEST_F(FileDefaultsTest, OtherWritesAreSavedSoonAndTogether) {
  const auto defaults = open();
  defaults->set("a", std::int64_t{1});
  loop.runFor(FileDefaults::kSaveDelay / 2);
  defaults->set("b", std::int64_t{2});
  EXPECT_TRUE(files.writes.entries.empty());
  loop.runFor(FileDefaults::kSaveDelay / 2);
  EXPECT_EQ(savedNumber("a"), 1);
  EXPECT_EQ(savedNumber("b"), 2);
  EXPECT_EQ(files.writes.entries.size(), 1U);
  loop.runFor(10 * FileDefaults::kSaveDelay);
  EXPECT_EQ(files.writes.entries.size(), 1U);
}

TEST_F(FileDefaultsTest, ARemovalIsSavedToo) {
  auto defaults = open();
  defaults->set("a", std::int64_t{1});
  defaults->set("b", std::int64_t{2});
  defaults.reset();
  defaults = open();
  defaults->remove("a");
  loop.runFor(FileDefaults::kSaveDelay);
  EXPECT_EQ(savedNumber("a"), 0);
  EXPECT_EQ(savedNumber("b"), 2);
}

TEST_F(FileDefaultsTest, WritingWhatIsThereSavesNothing) {
  auto defaults = open();
  defaults->set("key", std::int64_t{5});
  defaults.reset();
  files.writes.drain();
  defaults = open();
  const auto writeAgain = [&] {
    defaults->set("key", std::int64_t{5});
    defaults->remove("other");
  };
  loop.soon([&] {
    writeAgain();
    defaults->synchronize();
  });
  EXPECT_TRUE(loop.runFor({}));
  EXPECT_TRUE(files.writes.entries.empty()) << "when asked to save";
  loop.soon(writeAgain);
  EXPECT_TRUE(loop.runFor(2 * FileDefaults::kSaveDelay));
  EXPECT_EQ(loop.turns(), 2U) << "nothing waits to be saved";
  writeAgain();
  defaults.reset();
  EXPECT_TRUE(files.writes.entries.empty()) << "at the end";
}

TEST_F(FileDefaultsTest, ManySynchronisationsOfOneTurnAreOneSave) {
  const auto defaults = open();
  loop.soon([&] {
    for (std::int64_t number = 1; number <= 10; ++number) {
      defaults->set("key", number);
      defaults->synchronize();
    }
  });
  loop.runFor({});
  EXPECT_EQ(files.writes.entries.size(), 1U);
  EXPECT_EQ(savedNumber("key"), 10);
}

TEST_F(FileDefaultsTest, WhatIsNotSavedYetIsSavedAtTheEnd) {
  auto defaults = open();
  defaults->set("key", std::int64_t{5});
  defaults.reset();
  EXPECT_EQ(savedNumber("key"), 5);
  defaults = open();
  defaults->set("key", std::int64_t{6});
  defaults->synchronize();
  defaults.reset();
  EXPECT_EQ(savedNumber("key"), 6);
  // The job that was dispatched, and the timer, find nobody.
  EXPECT_TRUE(loop.runFor(2 * FileDefaults::kSaveDelay));
  EXPECT_EQ(savedNumber("key"), 6);
}

TEST_F(FileDefaultsTest, AFailedSaveIsTriedAgainEverMoreRarely) {
  CountingFiles disk(files);
  FileDefaults defaults(kPath, {disk, json, loop, queues});
  files.isFull = true;
  loop.soon([&] {
    defaults.set("key", std::int64_t{5});
    defaults.synchronize();
  });
  // After 1, 2, 4, 8, 16, 32 s, then once a minute.
  std::vector<long long> attempts;
  for (long long second = 0; second <= 200; ++second) {
    loop.runUntil(milliseconds(second * 1000));
    while (attempts.size() < disk.attempts) attempts.push_back(second);
  }
  EXPECT_EQ(attempts, (std::vector<long long>{0, 1, 3, 7, 15, 31, 63, 123, 183}));
  EXPECT_EQ(defaults.failedSaves(), 9U);
  EXPECT_FALSE(files.attributes(kPath));
  files.isFull = false;
  loop.runUntil(milliseconds(243'000));
  EXPECT_EQ(savedNumber("key"), 5);
  EXPECT_EQ(defaults.failedSaves(), 9U);
  loop.runFor(milliseconds(600'000));
  EXPECT_EQ(disk.attempts, 10U) << "what is saved is not saved again";
}

TEST_F(FileDefaultsTest, WhileSavingFailsNobodysWishMakesItFailFaster) {
  CountingFiles disk(files);
  FileDefaults defaults(kPath, {disk, json, loop, queues});
  files.isFull = true;
  const TimerId wishes = loop.every(milliseconds(10), [&, number = std::int64_t{0}]() mutable {
    defaults.set("key", ++number);
    defaults.synchronize();
  });
  loop.runUntil(milliseconds(60'000));
  EXPECT_LE(disk.attempts, 7U);
  EXPECT_GE(disk.attempts, 5U);
  loop.cancel(wishes);
  files.isFull = false;
  loop.runFor(FileDefaults::kLongestRetry);
  EXPECT_EQ(savedNumber("key"), 6000) << "the newest values, not those that failed";
  loop.soon([&] {
    defaults.set("key", std::int64_t{1});
    defaults.synchronize();
  });
  loop.runFor({});
  EXPECT_EQ(savedNumber("key"), 1) << "at once again, as it works again";
}

TEST_F(FileDefaultsTest, AFailedSaveLeavesTheOldValuesAndTheLastOneComesAtTheEnd) {
  auto defaults = open();
  defaults->set("key", std::int64_t{5});
  loop.runFor(FileDefaults::kSaveDelay);
  files.isFull = true;
  loop.soon([&] {
    defaults->set("key", std::int64_t{6});
    defaults->synchronize();
  });
  loop.runFor({});
  EXPECT_EQ(savedNumber("key"), 5);
  files.isFull = false;
  defaults.reset();
  EXPECT_EQ(savedNumber("key"), 6);
}

TEST_F(FileDefaultsTest, MemoryThatIsShortIsAFailedSave) {
  CountingFiles disk(files);
  FileDefaults defaults(kPath, {disk, json, loop, queues});
  disk.throws = true;
  loop.soon([&] {
    defaults.set("key", std::int64_t{5});
    defaults.synchronize();
  });
  loop.runFor({});
  EXPECT_EQ(defaults.failedSaves(), 1U);
  disk.throws = false;
  loop.runFor(FileDefaults::kSaveDelay);
  EXPECT_EQ(savedNumber("key"), 5);
}

TEST_F(FileDefaultsTest, AsksForFilesThatLast) {
  CountingFiles disk(files);
  FileDefaults defaults(kPath, {disk, json, loop, queues});
  defaults.set("key", std::int64_t{5});
  loop.runFor(FileDefaults::kSaveDelay);
  EXPECT_EQ(disk.lasting, 1U);
  EXPECT_EQ(disk.attempts, 1U);
}

/// A queue whose destructor is what ends the job under way.
class WatchedQueues final : public SerialQueues {
 public:
  class Queue final : public SerialQueue {
   public:
    explicit Queue(bool& isThere) : isThere_(isThere) { isThere_ = true; }
    ~Queue() override { isThere_ = false; }
    const std::string& label() const override { return label_; }
    bool dispatch(Task /*task*/) override { return true; }

   private:
    std::string label_ = "watched";
    bool& isThere_;
  };
  std::unique_ptr<SerialQueue> make(std::string_view /*label*/) override {
    return std::make_unique<Queue>(isThere);
  }

  bool isThere = false;
};

TEST_F(FileDefaultsTest, TheLastSaveBeginsWhenNoOtherIsUnderWay) {
  WatchedQueues watched;
  CountingFiles disk(files);
  disk.onAttempt = [&] { EXPECT_FALSE(watched.isThere); };
  auto defaults =
      std::make_unique<FileDefaults>(kPath, FileDefaults::Needs{disk, json, loop, watched});
  defaults->set("key", std::int64_t{5});
  defaults->synchronize();
  defaults.reset();
  EXPECT_EQ(disk.attempts, 1U);
  EXPECT_EQ(savedNumber("key"), 5);
}

TEST_F(FileDefaultsTest, ADamagedFileThatCannotBeCopiedIsMovedAside) {
  files.put(kPath, "{\"key\": 5");
  files.isFull = true;
  const auto defaults = open();
  EXPECT_EQ(bytes(kDamaged), "{\"key\": 5");
  EXPECT_FALSE(files.attributes(kPath));
}

TEST_F(FileDefaultsTest, ADamagedFileIsKeptAsideAndOverwrittenByTheNextSave) {
  files.put(kPath, "{\"key\": 5");
  const auto defaults = open();
  EXPECT_EQ(defaults->find("key"), nullptr);
  EXPECT_EQ(bytes(kDamaged), "{\"key\": 5");
  EXPECT_EQ(bytes(kPath), "{\"key\": 5");
  defaults->set("other", std::int64_t{1});
  loop.runFor(FileDefaults::kSaveDelay);
  EXPECT_EQ(savedNumber("other"), 1);
  EXPECT_EQ(bytes(kDamaged), "{\"key\": 5");
}

TEST_F(FileDefaultsTest, WhatCanBeUnderstoodOfADamagedFileCounts) {
  const std::string document = R"({"key": 5, "colour": {"colour": "red"}, "flag": true})";
  files.put(kPath, document);
  const auto defaults = open();
  EXPECT_EQ(integerForKey(*defaults, "key"), 5);
  EXPECT_EQ(defaults->find("colour"), nullptr);
  ASSERT_NE(defaults->find("flag"), nullptr);
  EXPECT_EQ(bytes(kDamaged), document);
}

TEST_F(FileDefaultsTest, AnEmptyFileIsDamaged) {
  files.put(kPath, "");
  EXPECT_EQ(open()->find("key"), nullptr);
  EXPECT_EQ(bytes(kDamaged), "");
}

TEST_F(FileDefaultsTest, AWholeFileLeavesNothingAside) {
  files.put(kPath, R"({"key": 5})");
  EXPECT_EQ(integerForKey(*open(), "key"), 5);
  EXPECT_FALSE(files.attributes(kDamaged));
}

TEST_F(FileDefaultsTest, AFileThatCannotBeReadIsMovedAside) {
  files.put(kPath, std::string(FileDefaults::kLargestFile + 1, ' '));
  const auto defaults = open();
  EXPECT_FALSE(files.attributes(kPath));
  ASSERT_TRUE(files.attributes(kDamaged));
  EXPECT_EQ(files.attributes(kDamaged)->size, FileDefaults::kLargestFile + 1);
  defaults->set("key", std::int64_t{5});
  loop.runFor(FileDefaults::kSaveDelay);
  EXPECT_EQ(savedNumber("key"), 5);
}

TEST_F(FileDefaultsTest, RemovesWhatADeadProcessLeft) {
  files.put(kPath, R"({"key": 5})");
  const std::string left = ".new-000000000000001a";
  files.put(kPath + left, "half");
  files.put("/data/app/other.json" + left, "somebody else's");
  const auto defaults = open();
  EXPECT_EQ(integerForKey(*defaults, "key"), 5);
  EXPECT_FALSE(files.attributes(kPath + left));
  EXPECT_TRUE(files.attributes("/data/app/other.json" + left));
}

TEST_F(FileDefaultsTest, ValuesKeepTheirTypesAcrossARestart) {
  const DefaultsValues values = {
      {"flag", true},
      {"integer", std::int64_t{1}},
      {"real", 1.0},
      {"text", std::string("1")},
      {"date", Date{1}},
      {"array", DefaultsArray{DefaultsValue(false), DefaultsValue(0.1)}},
      {"seats", DefaultsDictionary{{"7", DefaultsDictionary{{"xPos", std::int64_t{3}}}}}}};
  auto defaults = open();
  for (const auto& [key, value] : values) defaults->set(key, value);
  defaults.reset();
  defaults = open();
  for (const auto& [key, value] : values) {
    ASSERT_NE(defaults->find(key), nullptr) << key;
    EXPECT_EQ(*defaults->find(key), value) << key;
  }
}

}  // namespace
}  // namespace halvora
