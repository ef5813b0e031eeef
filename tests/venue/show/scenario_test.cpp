// SPDX-License-Identifier: Apache-2.0
// Which scenarios the trace takes, and how it says why it does not take one.
#include "venue/show/scenario.h"

#include <cctype>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kPacket = "09C9010200070000000000000000000000000000000000000107";

struct Rejected {
  const char* name;
  /// The line that is wrong, 1-based.
  int line;
  std::string text;
};

// A failed test names its parameter.
void PrintTo(const Rejected& rejected, std::ostream* stream) { *stream << rejected.text; }

template <class Case>
std::string nameOf(const testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

// Whether the text holds the number, not as a piece of a longer one.
bool holdsNumber(const std::string& text, int number) {
  const std::string digits = std::to_string(number);
  for (std::size_t at = text.find(digits); at != std::string::npos;
       at = text.find(digits, at + 1)) {
    const std::size_t end = at + digits.size();
    const bool beginsInside = at > 0 && std::isdigit(static_cast<unsigned char>(text[at - 1])) != 0;
    const bool endsInside =
        end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])) != 0;
    if (!beginsInside && !endsInside) return true;
  }
  return false;
}

class ScenarioRejected : public testing::TestWithParam<Rejected> {};

TEST_P(ScenarioRejected, NamesTheFileAndTheLine) {
  const TestFolder folder;
  const std::string file = folder.write("show.jsonl", GetParam().text);
  const ToolRun run = runTool({"trace", file});
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr(file));
  const std::size_t behind = run.error.find(file) + file.size();
  if (behind <= run.error.size()) {
    EXPECT_TRUE(holdsNumber(run.error.substr(behind), GetParam().line)) << run.error;
  }
}

const std::string kStart = "{\"at\":0,\"start\":true}\n";
std::string only(const std::string& members) { return "{\"at\":0," + members + "}\n"; }
std::string second(const std::string& line) { return kStart + line + "\n" + kStart; }
std::string packet(const std::string& more) {
  return only("\"packet\":\"" + kPacket + "\"," + more);
}

INSTANTIATE_TEST_SUITE_P(
    Line, ScenarioRejected,
    testing::Values(
        Rejected{"Blank", 2, second("")}, Rejected{"BlankOfSpaces", 2, second("  \t")},
        Rejected{"BlankFirst", 1, "\n" + kStart}, Rejected{"BlankLast", 2, kStart + "\n"},
        Rejected{"BlankWithReturn", 2, second("\r")}, Rejected{"OnlyALineFeed", 1, "\n"},
        Rejected{"NotJson", 2, second("start")}, Rejected{"CutShort", 2, second("{\"at\":0,")},
        Rejected{"TrailingComma", 2, second("{\"at\":0,\"start\":true,}")},
        Rejected{"TwoObjects", 2, second("{\"at\":0,\"start\":true}{\"at\":0,\"start\":true}")},
        Rejected{"Comment", 2, second("// the doors open")},
        Rejected{"Array", 2, second("[{\"at\":0,\"start\":true}]")},
        Rejected{"Text", 2, second("\"start\"")}, Rejected{"Number", 2, second("0")},
        Rejected{"Null", 2, second("null")}, Rejected{"EmptyObject", 2, second("{}")},
        Rejected{"SpreadOverLines", 1, "{\"at\":0,\n\"start\":true}\n"},
        Rejected{"SingleQuotes", 2, second("{'at':0,'start':true}")}),
    nameOf<Rejected>);

INSTANTIATE_TEST_SUITE_P(
    Time, ScenarioRejected,
    testing::Values(Rejected{"None", 2, second("{\"start\":true}")},
                    Rejected{"NoneInTheDevice", 1, "{\"device\":{}}\n"},
                    Rejected{"Text", 2, second("{\"at\":\"0\",\"start\":true}")},
                    Rejected{"Null", 2, second("{\"at\":null,\"start\":true}")},
                    Rejected{"Boolean", 2, second("{\"at\":true,\"start\":true}")},
                    Rejected{"Negative", 1, "{\"at\":-0.001,\"start\":true}\n"},
                    Rejected{"Infinite", 2, second("{\"at\":1e999,\"start\":true}")},
                    Rejected{"NotANumber", 2, second("{\"at\":NaN,\"start\":true}")},
                    Rejected{"BelowTheLineBefore", 3,
                             kStart + "{\"at\":2,\"start\":true}\n{\"at\":1.999,\"start\":true}\n"},
                    Rejected{"BelowAnEarlierLine", 4,
                             kStart + "{\"at\":2,\"start\":true}\n{\"at\":2,\"start\":true}\n" +
                                 kStart}),
    nameOf<Rejected>);

INSTANTIATE_TEST_SUITE_P(
    Action, ScenarioRejected,
    testing::Values(
        Rejected{"None", 2, second("{\"at\":0}")},
        Rejected{"Unknown", 2, second("{\"at\":0,\"stop\":true}")},
        Rejected{"UnknownBesideAKnownOne", 2, second("{\"at\":0,\"start\":true,\"stop\":true}")},
        Rejected{"OtherCase", 2, second("{\"at\":0,\"Start\":true}")},
        Rejected{"Two", 2, second("{\"at\":0,\"start\":true,\"app\":\"active\"}")},
        Rejected{"TwoOrTheOtherWay", 2, second("{\"at\":0,\"playVideo\":\"1\",\"invalidate\":1}")},
        Rejected{"StartFalse", 1, only("\"start\":false")},
        Rejected{"StartOne", 1, only("\"start\":1")},
        Rejected{"StartNull", 1, only("\"start\":null")},
        Rejected{"AppUnknown", 1, only("\"app\":\"asleep\"")},
        Rejected{"AppOtherCase", 1, only("\"app\":\"Active\"")},
        Rejected{"AppBoolean", 1, only("\"app\":true")},
        Rejected{"DefaultsArray", 1, only("\"defaults\":[]")},
        Rejected{"DefaultsNull", 1, only("\"defaults\":null")},
        Rejected{"DefaultsText", 1, only("\"defaults\":\"xPos\"")},
        Rejected{"InvalidateFraction", 1, only("\"invalidate\":1.5")},
        Rejected{"InvalidateText", 1, only("\"invalidate\":\"7\"")},
        Rejected{"InvalidateBoolean", 1, only("\"invalidate\":true")},
        Rejected{"PlayVideoNumber", 1, only("\"playVideo\":3")},
        Rejected{"PrecomputeNumber", 1, only("\"precompute\":7")},
        Rejected{"PrecomputeUnknownKey", 1,
                 only("\"precompute\":{\"venueId\":7,\"seatX\":1,\"seatY\":2,\"seatZ\":3}")},
        Rejected{"PrecomputeText", 1,
                 only("\"precompute\":{\"venueId\":\"7\",\"seatX\":1,\"seatY\":2}")},
        Rejected{"BluetoothText", 1, only("\"bluetooth\":\"off\"")},
        Rejected{"BluetoothUnknownKey", 1, only("\"bluetooth\":{\"power\":1}")},
        Rejected{"BluetoothStateText", 1, only("\"bluetooth\":{\"state\":\"5\"}")},
        Rejected{"BluetoothStateBoolean", 1, only("\"bluetooth\":{\"state\":true}")},
        Rejected{"BluetoothStateFraction", 1, only("\"bluetooth\":{\"state\":4.5}")}),
    nameOf<Rejected>);

INSTANTIATE_TEST_SUITE_P(
    Packet, ScenarioRejected,
    testing::Values(Rejected{"OddDigits", 1, only("\"packet\":\"09C\"")},
                    Rejected{"NotHexadecimal", 1, only("\"packet\":\"09CG\"")},
                    Rejected{"SpaceInsideAByte", 1, only("\"packet\":\"0 9\"")},
                    Rejected{"Number", 1, only("\"packet\":9")},
                    Rejected{"Null", 1, only("\"packet\":null")},
                    Rejected{"Bytes", 1, only("\"packet\":[9,201]")},
                    Rejected{"EveryWithoutUntil", 1, packet("\"every\":1")},
                    Rejected{"UntilWithoutEvery", 1, packet("\"until\":1")},
                    Rejected{"EveryZero", 1, packet("\"every\":0,\"until\":1")},
                    Rejected{"EveryNegative", 1, packet("\"every\":-1,\"until\":1")},
                    Rejected{"EveryText", 1, packet("\"every\":\"1\",\"until\":1")},
                    Rejected{"EveryNull", 1, packet("\"every\":null,\"until\":1")},
                    Rejected{"UntilText", 1, packet("\"every\":1,\"until\":\"1\"")},
                    Rejected{"UntilInfinite", 1, packet("\"every\":1,\"until\":1e999")},
                    Rejected{"EveryOfAnotherAction", 1,
                             only("\"start\":true,\"every\":1,\"until\":2")},
                    Rejected{"UnknownKey", 1, packet("\"rssi\":-40")}),
    nameOf<Rejected>);

INSTANTIATE_TEST_SUITE_P(
    Device, ScenarioRejected,
    testing::Values(Rejected{"NotFirst", 2, second("{\"at\":0,\"device\":{}}")},
                    Rejected{"Twice", 2, "{\"at\":0,\"device\":{}}\n{\"at\":0,\"device\":{}}\n"},
                    Rejected{"NotAtZero", 1, "{\"at\":0.5,\"device\":{}}\n"},
                    Rejected{"WithAnAction", 1, only("\"device\":{},\"start\":true")},
                    Rejected{"Array", 1, only("\"device\":[]")},
                    Rejected{"Null", 1, only("\"device\":null")},
                    Rejected{"True", 1, only("\"device\":true")},
                    Rejected{"UnknownKey", 1, only("\"device\":{\"depth\":3}")},
                    Rejected{"BrightnessText", 1, only("\"device\":{\"brightness\":\"0.5\"}")},
                    Rejected{"BrightnessBoolean", 1, only("\"device\":{\"brightness\":true}")},
                    Rejected{"TorchNumber", 1, only("\"device\":{\"torch\":1}")},
                    Rejected{"WidthText", 1, only("\"device\":{\"width\":\"390\"}")},
                    Rejected{"HeightNull", 1, only("\"device\":{\"height\":null}")},
                    Rejected{"AuthorizationText", 1, only("\"device\":{\"authorization\":\"3\"}")},
                    Rejected{"StateArray", 1, only("\"device\":{\"state\":[5]}")}),
    nameOf<Rejected>);

// A complaint quotes what it found, and is one line all the same.
INSTANTIATE_TEST_SUITE_P(
    LineFeed, ScenarioRejected,
    testing::Values(Rejected{"InAKey", 2, second("{\"at\":0,\"start\":true,\"a\\nb\":1}")},
                    Rejected{"InAnInnerKey", 1, only("\"device\":{\"a\\nb\":1}")}),
    nameOf<Rejected>);

TEST(ScenarioFile, MissingIsRefusedByName) {
  const TestFolder folder;
  const std::string file = (folder.path() / "missing.jsonl").string();
  const ToolRun run = runTool({"trace", file});
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr(file));
}

TEST(ScenarioFile, FolderIsRefusedByName) {
  const TestFolder folder;
  const ToolRun run = runTool({"trace", folder.path().string()});
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_THAT(run.error, HasSubstr(folder.path().string()));
}

TEST(ScenarioFile, OfTwoBadLinesTheFirstIsNamed) {
  const TestFolder folder;
  const std::string file = folder.write("show.jsonl", kStart + kStart + "x\ny\n");
  const ToolRun run = runTool({"trace", file});
  EXPECT_EQ(flawOfRefusal(run), "");
  EXPECT_TRUE(holdsNumber(run.error.substr(run.error.find(file) + file.size()), 3)) << run.error;
}

struct Accepted {
  const char* name;
  std::string text;
};
void PrintTo(const Accepted& accepted, std::ostream* stream) { *stream << accepted.text; }

class ScenarioAccepted : public testing::TestWithParam<Accepted> {};

TEST_P(ScenarioAccepted, IsTraced) {
  const TestFolder folder;
  const ToolRun run = runTool({"trace", folder.write("show.jsonl", GetParam().text)});
  EXPECT_EQ(run.status, 0) << run.error;
  EXPECT_EQ(run.error, "");
}

INSTANTIATE_TEST_SUITE_P(
    File, ScenarioAccepted,
    testing::Values(
        Accepted{"Empty", ""}, Accepted{"CarriageReturns", "{\"at\":0,\"start\":true}\r\n"},
        Accepted{"NoLineFeedAtTheEnd", "{\"at\":0,\"start\":true}"},
        Accepted{"WhiteSpace", " { \"at\" : 0 ,\t\"start\" : true } \n"},
        Accepted{"OtherOrder", "{\"start\":true,\"at\":0}\n"},
        Accepted{"EqualTimes", kStart + kStart + "{\"at\":0.0,\"start\":true}\n"},
        Accepted{"EmptyDevice", only("\"device\":{}")},
        Accepted{"FullDevice", only("\"device\":{\"brightness\":1,\"torch\":false,\"width\":1.5,"
                                    "\"height\":2,\"authorization\":0,\"state\":0}")},
        Accepted{"Bluetooth", only("\"bluetooth\":{\"authorization\":2,\"state\":4}") +
                                  only("\"bluetooth\":{}")},
        Accepted{"Defaults",
                 only("\"defaults\":{\"a\":null,\"b\":true,\"c\":-1,\"d\":1.5,\"e\":\"x\","
                      "\"f\":[1,[2]],\"g\":{\"h\":{\"i\":[{}]}}}") +
                     only("\"defaults\":{}")},
        Accepted{"Repeats", packet("\"every\":0.5,\"until\":2")},
        Accepted{"SpacedPacket", only("\"packet\":\"09 c9:01\"") + only("\"packet\":\"\"")},
        Accepted{"OtherActions",
                 only("\"app\":\"active\"") + only("\"app\":\"inactive\"") +
                     only("\"precompute\":{\"venueId\":7,\"seatX\":0,\"seatY\":-1}") +
                     only("\"invalidate\":7") + only("\"playVideo\":\"\"")}),
    nameOf<Accepted>);

Scenario parsed(const std::string& text) {
  auto result = parseScenario(text, ExactJsonReader());
  if (const auto* error = std::get_if<ScenarioError>(&result)) {
    ADD_FAILURE() << error->line << ": " << error->what;
    return {};
  }
  return std::get<Scenario>(std::move(result));
}

TEST(ScenarioDevice, WhatIsNotGivenHasItsUsualValue) {
  for (const std::string& text : {std::string(), kStart, only("\"device\":{}")}) {
    const ScenarioDevice device = parsed(text).device;
    EXPECT_EQ(device.brightness, 0.5);
    EXPECT_TRUE(device.torch);
    EXPECT_EQ(device.bounds.width, 390);
    EXPECT_EQ(device.bounds.height, 844);
    EXPECT_EQ(device.authorization, BluetoothAuthorization::allowedAlways);
    EXPECT_EQ(device.state, CentralState::poweredOn);
  }
}

TEST(ScenarioDevice, WhatIsGivenCounts) {
  const ScenarioDevice device =
      parsed(only("\"device\":{\"torch\":false,\"height\":20.5,\"state\":4}")).device;
  EXPECT_EQ(device.brightness, 0.5);
  EXPECT_FALSE(device.torch);
  EXPECT_EQ(device.bounds.height, 20.5);
  EXPECT_EQ(device.state, CentralState::poweredOff);
}

TEST(ScenarioDefaults, NullRemovesAndTheRestIsKeptAsItIs) {
  const Scenario scenario = parsed(only("\"defaults\":{\"a\":null,\"b\":{\"c\":[1,\"d\"]}}"));
  ASSERT_EQ(scenario.lines.size(), 1U);
  const auto* action = std::get_if<DefaultsAction>(&scenario.lines[0].action);
  ASSERT_NE(action, nullptr);
  ASSERT_EQ(action->writes.size(), 2U);
  EXPECT_EQ(action->writes[0].first, "a");
  EXPECT_FALSE(action->writes[0].second.has_value());
  ASSERT_TRUE(action->writes[1].second.has_value());
  const DefaultsArray array{DefaultsValue(std::int64_t{1}), DefaultsValue(std::string("d"))};
  DefaultsDictionary dictionary;
  dictionary.push_back({"c", DefaultsValue(array)});
  EXPECT_TRUE(*action->writes[1].second == DefaultsValue(dictionary));
}

TEST(ScenarioLoading, DefaultsAtZeroThatStandFirstComeBefore) {
  const std::string defaults = only("\"defaults\":{\"a\":1}");
  const std::string late = "{\"at\":0.1,\"defaults\":{\"a\":1}}\n";
  EXPECT_EQ(parsed("").linesBeforeLoading(), 0U);
  EXPECT_EQ(parsed(defaults + defaults + kStart + defaults).linesBeforeLoading(), 2U);
  EXPECT_EQ(parsed(only("\"device\":{}") + defaults + defaults).linesBeforeLoading(), 2U);
  EXPECT_EQ(parsed(kStart + defaults).linesBeforeLoading(), 0U);
  EXPECT_EQ(parsed(defaults + late).linesBeforeLoading(), 1U);
}

std::vector<long long> microsecondsOf(const ScenarioLine& line) {
  std::vector<long long> times;
  for (std::uint64_t k = 0; k < line.occurrences(); ++k) {
    const auto time = line.timeOf(k);
    times.push_back(time ? static_cast<long long>(time->count()) : -1);
  }
  EXPECT_FALSE(line.timeOf(line.occurrences()).has_value());
  return times;
}

TEST(ScenarioRepeats, AreCountedFromTheFirstAndEndWithUntil) {
  const auto timesOf = [](const std::string& more) {
    return microsecondsOf(parsed(packet(more)).lines.at(0));
  };
  EXPECT_THAT(timesOf("\"every\":0.05,\"until\":0.15"), ElementsAre(0, 50000, 100000, 150000));
  EXPECT_THAT(timesOf("\"every\":0.1,\"until\":0.29"), ElementsAre(0, 100000, 200000));
  EXPECT_THAT(timesOf("\"every\":0.1,\"until\":0.3"), ElementsAre(0, 100000, 200000, 300000));
  EXPECT_THAT(timesOf("\"every\":1,\"until\":0"), ElementsAre(0));
}

TEST(ScenarioRepeats, DoNotDrift) {
  const ScenarioLine line = parsed(packet("\"every\":0.1,\"until\":3600")).lines.at(0);
  ASSERT_EQ(line.occurrences(), 36001U);
  for (std::uint64_t k = 0; k <= 36000; ++k) {
    const auto time = line.timeOf(k);
    ASSERT_TRUE(time.has_value()) << k;
    ASSERT_EQ(time->count(), static_cast<long long>(k) * 100000) << k;
  }
}

TEST(ScenarioRepeats, CountTowardsTheLastAction) {
  const Scenario scenario =
      parsed(packet("\"every\":0.7,\"until\":3") + "{\"at\":1,\"start\":true}\n");
  EXPECT_EQ(scenario.lastAction().count(), 2'800'000);
  EXPECT_EQ(parsed("").lastAction().count(), 0);
}

}  // namespace
}  // namespace halvora
