// SPDX-License-Identifier: Apache-2.0
#include "engine/guarded_needs.h"

#include <map>
#include <new>
#include <string>
#include <utility>
#include <variant>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_run_loop.h"

namespace halvora {
namespace {

/// Has no memory for its next write while that is said, once.
class ShortDefaults final : public UserDefaults {
 public:
  const DefaultsValue* find(std::string_view key) const override {
    const auto found = values.find(std::string(key));
    return found == values.end() ? nullptr : &found->second;
  }
  void set(std::string_view key, DefaultsValue value) override {
    if (std::exchange(isShort, false)) throw std::bad_alloc();
    values[std::string(key)] = std::move(value);
  }
  void remove(std::string_view key) override { values.erase(std::string(key)); }
  void synchronize() override { ++synchronised; }

  std::string text(const std::string& key) const {
    const DefaultsValue* found = find(key);
    return found == nullptr ? "" : std::get<std::string>(found->storage);
  }

  std::map<std::string, DefaultsValue> values;
  bool isShort = false;
  int synchronised = 0;
};

class JoinedDefaultsTest : public testing::Test {
 protected:
  VirtualRunLoop loop_;
  ShortDefaults beneath_;
  JoinedDefaults joined_{beneath_, loop_};
};

TEST_F(JoinedDefaultsTest, WhatIsKeptIsReadAndWrittenOnce) {
  joined_.set("a", std::string("1"));
  joined_.set("a", std::string("2"));
  joined_.synchronize();
  EXPECT_TRUE(beneath_.values.empty());
  EXPECT_EQ(std::get<std::string>(joined_.find("a")->storage), "2");
  loop_.runFor(milliseconds(1));
  EXPECT_EQ(beneath_.text("a"), "2");
  EXPECT_EQ(beneath_.synchronised, 1);
}

TEST_F(JoinedDefaultsTest, LetGoWriteWhatIsKeptBeforeWhatComes) {
  joined_.set("a", std::string("1"));
  joined_.synchronize();
  joined_.setBounded(false);
  EXPECT_EQ(beneath_.text("a"), "1");
  joined_.set("a", std::string("2"));
  loop_.runFor(milliseconds(2000));
  // The write that was due does not bring the older value back.
  EXPECT_EQ(beneath_.text("a"), "2");
}

TEST_F(JoinedDefaultsTest, WhereThatFailsTheyAreHeldAsBefore) {
  joined_.set("a", std::string("1"));
  joined_.synchronize();
  beneath_.isShort = true;
  EXPECT_THROW(joined_.setBounded(false), std::bad_alloc);
  // Nothing newer goes past what is kept ...
  joined_.set("a", std::string("2"));
  EXPECT_TRUE(beneath_.values.empty());
  EXPECT_EQ(std::get<std::string>(joined_.find("a")->storage), "2");
  // ... which is written when it was due.
  loop_.runFor(milliseconds(1000));
  EXPECT_EQ(beneath_.text("a"), "2");
  joined_.setBounded(false);
  joined_.set("a", std::string("3"));
  EXPECT_EQ(beneath_.text("a"), "3");
}

TEST_F(JoinedDefaultsTest, WhereThatFailsNoneOfTheNeedsIsLetGo) {
  Platform platform{.runLoop = loop_};
  platform.defaults = beneath_;
  GuardedNeeds needs(platform);
  needs.defaults.set("a", std::string("1"));
  beneath_.isShort = true;
  EXPECT_THROW(needs.setBounded(false), std::bad_alloc);
  EXPECT_TRUE(needs.isBounded());
  for (int touch = 0; touch < 5; ++touch) needs.haptics.impact(ImpactStyle::light);
  EXPECT_EQ(needs.haptics.heldBack(), 3U);
}

}  // namespace
}  // namespace halvora
