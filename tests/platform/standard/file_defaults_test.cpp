// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/file_defaults.h"

#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/json/rapid_json_reader.h"
#include "platform/virtual/virtual_devices.h"
#include "platform/virtual/virtual_files.h"
#include "platform/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

const std::string kPath = "/data/app/defaults.json";
const std::string kDamaged = kPath + ".damaged";

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
  RapidJsonReader json;
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
  defaults->set("key", std::int64_t{5});
  defaults->remove("other");
  defaults->synchronize();
  // Background work runs when a turn ends, so there has to be one.
  loop.soon([] {});
  loop.runFor(2 * FileDefaults::kSaveDelay);
  EXPECT_TRUE(files.writes.entries.empty());
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

TEST_F(FileDefaultsTest, AFailedSaveIsTriedAgain) {
  auto defaults = open();
  files.isFull = true;
  loop.soon([&] {
    defaults->set("key", std::int64_t{5});
    defaults->synchronize();
  });
  loop.runFor({});
  EXPECT_FALSE(files.attributes(kPath));
  files.isFull = false;
  loop.soon([&] { defaults->synchronize(); });
  loop.runFor({});
  EXPECT_EQ(savedNumber("key"), 5);

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
  files.put(kPath + ".new-1a2b", "half");
  files.put("/data/app/other.json.new-1a2b", "somebody else's");
  const auto defaults = open();
  EXPECT_EQ(integerForKey(*defaults, "key"), 5);
  EXPECT_FALSE(files.attributes(kPath + ".new-1a2b"));
  EXPECT_TRUE(files.attributes("/data/app/other.json.new-1a2b"));
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
