// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario_schedule.h"

#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "venue/show/scenario_run.h"

namespace halvora {
namespace {

using testing::ElementsAre;

Scenario parsed(const std::string& text) {
  return std::get<Scenario>(parseScenario(text, ExactJsonReader()));
}

// Milliseconds, and the video that tells the lines apart, or what else is done.
std::string named(Duration time, const ScenarioAction& action) {
  std::string name = "start";
  if (const auto* video = std::get_if<PlayVideoAction>(&action)) name = video->name;
  if (const auto* packet = std::get_if<PacketAction>(&action)) {
    name = "packet " + std::to_string(packet->data.front());
  }
  if (std::holds_alternative<DefaultsAction>(action)) name = "defaults";
  if (std::holds_alternative<LoadAction>(action)) name = "load";
  return std::to_string(time / milliseconds(1)) + " " + name;
}

std::vector<std::string> momentsOf(const std::string& text, Duration end = Duration::max()) {
  const Scenario scenario = parsed(text);
  ScenarioSchedule schedule(scenario);
  std::vector<std::string> moments;
  Duration before{};
  std::uint64_t order = 0;
  while (const auto moment = schedule.next(end)) {
    EXPECT_TRUE(moments.empty() || moment->time > before || moment->order > order);
    before = moment->time;
    order = moment->order;
    moments.push_back(named(moment->time, *moment->action));
  }
  return moments;
}

constexpr const char* kDefaults = "{\"at\":0,\"defaults\":{\"a\":1}}\n";
constexpr const char* kStart = "{\"at\":0,\"start\":true}\n";
constexpr const char* kTwoRepeats =
    "{\"at\":0.1,\"packet\":\"01\",\"every\":0.1,\"until\":0.4}\n"
    "{\"at\":0.1,\"packet\":\"02\",\"every\":0.15,\"until\":0.4}\n"
    "{\"at\":0.3,\"playVideo\":\"a\"}\n"
    "{\"at\":0.4,\"playVideo\":\"b\"}\n";

TEST(ScenarioSchedule, LoadsTheViewBehindTheDefaultsThatStandFirst) {
  EXPECT_THAT(momentsOf(""), ElementsAre("0 load"));
  EXPECT_THAT(momentsOf(kStart), ElementsAre("0 load", "0 start"));
  EXPECT_THAT(momentsOf(std::string(kDefaults) + kDefaults + kStart + kDefaults),
              ElementsAre("0 defaults", "0 defaults", "0 load", "0 start", "0 defaults"));
}

TEST(ScenarioSchedule, PutsRepeatsBetweenTheOtherLines) {
  EXPECT_THAT(momentsOf(kTwoRepeats),
              ElementsAre("0 load", "100 packet 1", "100 packet 2", "200 packet 1", "250 packet 2",
                          "300 packet 1", "300 a", "400 packet 1", "400 packet 2", "400 b"));
}

TEST(ScenarioSchedule, EndsWhereItIsAskedTo) {
  EXPECT_THAT(momentsOf(kTwoRepeats, milliseconds(200)),
              ElementsAre("0 load", "100 packet 1", "100 packet 2", "200 packet 1"));
}

struct ScenarioRunTest : testing::Test {
  VirtualRunLoop loop;
  std::vector<std::string> done;
  Scenario scenario = parsed(std::string(kDefaults) + kTwoRepeats);
  ScenarioRun::Act noting = [this](const ScenarioAction& action) {
    done.push_back(named(loop.now(), action));
  };

  void note(const char* what) {
    done.push_back(std::to_string(loop.now() / milliseconds(1)) + " " + what);
  }
};

TEST_F(ScenarioRunTest, DoesEachThingAtItsTimeFromItsBeginning) {
  loop.runUntil(milliseconds(1000));
  const ScenarioRun run(ScenarioSchedule(scenario), static_cast<RunLoop&>(loop), noting);
  EXPECT_TRUE(done.empty());
  loop.runFor(milliseconds(250));
  EXPECT_THAT(done, ElementsAre("1000 defaults", "1000 load", "1100 packet 1", "1100 packet 2",
                                "1200 packet 1", "1250 packet 2"));
  EXPECT_EQ(run.time(), milliseconds(250));
}

TEST_F(ScenarioRunTest, ComesBeforeThePhonesOwnTurnsInVirtualTime) {
  loop.after(milliseconds(100), [this] { note("own"); });
  const ScenarioRun run(ScenarioSchedule(scenario), loop, [this](const ScenarioAction& action) {
    noting(action);
    if (loop.now() == milliseconds(100)) loop.soon([this] { note("soon"); });
  });
  loop.runUntil(milliseconds(100));
  EXPECT_THAT(done, ElementsAre("0 defaults", "0 load", "100 packet 1", "100 packet 2", "100 own",
                                "100 soon", "100 soon"));
}

TEST_F(ScenarioRunTest, GoesOnAfterAnActThatFailed) {
  const ScenarioRun run(ScenarioSchedule(scenario), loop, [this](const ScenarioAction& action) {
    noting(action);
    if (std::holds_alternative<LoadAction>(action)) throw std::bad_alloc();
  });
  loop.runUntil(milliseconds(100));
  EXPECT_EQ(loop.failures(), 1U);
  EXPECT_THAT(done, ElementsAre("0 defaults", "0 load", "100 packet 1", "100 packet 2"));
}

TEST_F(ScenarioRunTest, StopsWhenItGoes) {
  {
    const ScenarioRun run(ScenarioSchedule(scenario), static_cast<RunLoop&>(loop), noting);
    loop.runUntil(milliseconds(100));
  }
  {
    const ScenarioRun run(ScenarioSchedule(scenario), loop, noting);
    loop.runUntil(milliseconds(100));
  }
  done.clear();
  loop.runUntil(milliseconds(1000));
  EXPECT_TRUE(done.empty());
}

TEST_F(ScenarioRunTest, MayBeDestroyedByItsEnd) {
  std::optional<ScenarioRun> run(std::in_place, ScenarioSchedule(scenario),
                                 static_cast<RunLoop&>(loop), noting);
  run->endAfter(milliseconds(240), [&] {
    note("end");
    run.reset();
  });
  loop.runUntil(milliseconds(1000));
  EXPECT_FALSE(run.has_value());
  EXPECT_EQ(done.back(), "240 end");
  EXPECT_EQ(done.size(), 6U);
}

}  // namespace
}  // namespace halvora
