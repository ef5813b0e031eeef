// SPDX-License-Identifier: Apache-2.0
// When cues come, what each of them sends, and the scenario that a show is compiled to.
#include "venue/show/cue_schedule.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "venue/show/cue_steps.h"
#include "venue/show/scenario.h"

namespace halvora {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

CueList readShow(const std::string& cues) {
  auto parsed = parseCueList("application: 1\ncues:\n" + cues, {});
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&parsed)) {
    ADD_FAILURE() << textOf(flaws->front(), "show");
    return {};
  }
  return std::get<CueList>(std::move(parsed));
}

std::vector<std::pair<long long, long long>> placesIn(const std::string& cues) {
  std::vector<std::pair<long long, long long>> places;
  for (const CuePlace& place : placesOf(readShow(cues))) {
    places.emplace_back(place.begin / milliseconds(1), place.end / milliseconds(1));
  }
  return places;
}

// Time and frame, or time and master, of each packet.
std::vector<std::pair<long long, int>> framesIn(const std::string& cues) {
  std::vector<std::pair<long long, int>> frames;
  const auto packets = packetsOf(readShow(cues), 1);
  for (const ShowPacket& sent : packets.value()) {
    frames.emplace_back(sent.begin / milliseconds(1), cueToken(sent.packet));
  }
  return frames;
}
std::vector<std::pair<long long, int>> mastersIn(const std::string& cues) {
  std::vector<std::pair<long long, int>> masters;
  const auto packets = packetsOf(readShow(cues), 1);
  for (const ShowPacket& sent : packets.value()) {
    masters.emplace_back(sent.begin / milliseconds(1), sent.packet.master);
  }
  return masters;
}

const MapFrames kUnknown = [](int, int) { return std::nullopt; };
MapFrames framesOf(int count) {
  return [count](int, int) { return std::optional(count); };
}

TEST(CuePlaces, TimesAreTheirOwn) {
  EXPECT_THAT(placesIn("- {name: a, at: 1, look: {}}\n- {name: b, at: 2.5, hold: 3, look: {}}\n"),
              ElementsAre(Pair(1000, 2500), Pair(2500, 5500)));
}

TEST(CuePlaces, WithoutAHandOnGoACueIsHeldForItsTime) {
  EXPECT_THAT(placesIn("- {name: a, hold: 2, look: {}}\n- {name: b, look: {}}\n"
                       "- {name: c, look: {}}\n"),
              ElementsAre(Pair(0, 2000), Pair(2000, 7000), Pair(7000, 7000)));
}

TEST(CuePlaces, ACueThatWaitsComesBeforeTheNextTime) {
  EXPECT_THAT(placesIn("- {name: a, at: 0, look: {}}\n- {name: b, look: {}}\n"
                       "- {name: c, look: {}}\n- {name: d, at: 4, hold: 1, look: {}}\n"),
              ElementsAre(Pair(0, 2000), Pair(2000, 3000), Pair(3000, 4000), Pair(4000, 5000)));
  EXPECT_THAT(placesIn("- {name: a, at: 0, hold: 9, look: {}}\n- {name: b, look: {}}\n"
                       "- {name: c, at: 4, look: {}}\n"),
              ElementsAre(Pair(0, 4000), Pair(4000, 4000), Pair(4000, 4000)));
}

TEST(CuePlaces, AnotherTransmitterGoesOnForItsHold) {
  EXPECT_THAT(placesIn("- {name: a, at: 0, hold: 3, transmitter: 255, look: {}}\n"
                       "- {name: b, at: 2, hold: 1, look: {}}\n"),
              ElementsAre(Pair(0, 3000), Pair(2000, 3000)));
}

TEST(ShowPackets, AMapKeepsItsPace) {
  EXPECT_THAT(framesIn("- {name: a, at: 3, hold: 0.1, look: {map: {id: 1, from: 9}}}\n"),
              ElementsAre(Pair(3000, 9), Pair(3033, 10), Pair(3067, 11)));
  EXPECT_THAT(framesIn("- {name: a, at: 0, hold: 0.4, look: {map: {id: 1, rate: 10}}}\n"),
              ElementsAre(Pair(0, 1), Pair(100, 4), Pair(200, 7), Pair(300, 10)));
  // Twice as fast as the map: each frame once.
  EXPECT_THAT(framesIn("- {name: a, at: 0, hold: 0.1, look: {map: {id: 1, rate: 60}}}\n"),
              ElementsAre(Pair(0, 1), Pair(33, 2), Pair(67, 3)));
}

TEST(ShowPackets, AMasterFadesFromTheCueBefore) {
  EXPECT_THAT(mastersIn("- {name: a, at: 0, look: {master: 10}}\n"
                        "- {name: b, at: 1, fade: 0.4, hold: 1, look: {master: 20}}\n"
                        "- {name: c, at: 5, fade: 0.3, look: {master: 0}}\n"),
              ElementsAre(Pair(0, 10), Pair(1000, 13), Pair(1100, 15), Pair(1200, 18),
                          Pair(1300, 20), Pair(5000, 13), Pair(5100, 7), Pair(5200, 0)));
  // What rounds to the same level is no new look.
  EXPECT_THAT(mastersIn("- {name: a, at: 0, look: {master: 1}}\n"
                        "- {name: b, at: 1, fade: 0.4, look: {master: 2}}\n"),
              ElementsAre(Pair(0, 1), Pair(1000, 1), Pair(1100, 2)));
}

TEST(ShowPackets, SequenceNumbersRiseAndSkipNought) {
  const CueList show = readShow("- {name: a, at: 0, look: {}}\n- {name: b, at: 1, look: {}}\n");
  const auto packets = packetsOf(show, 65535).value();
  EXPECT_EQ(packets[0].packet.sequence, 65535);
  EXPECT_EQ(packets[1].packet.sequence, 1);
}

TEST(ShowPackets, NobodyWaitsForMoreThanAShowCanHave) {
  const CueList show = readShow(
      "- {name: a, at: 0, look: {}}\n- {name: b, fade: \"5000:00\", look: {}}\n"
      "- {name: c, at: \"5700:00\", look: {}}\n");
  // A fade of four days has few looks, as a master has few levels.
  EXPECT_TRUE(packetsOf(show, 1));
  const CueList map = readShow(
      "- {name: a, at: 0, look: {map: {id: 1}}}\n- {name: b, at: \"5700:00\", look: {}}\n");
  EXPECT_LE(packetsOf(map, 1).value().size(), 65536U);
}

TEST(MapFlaws, ACueEndsWithItsVideo) {
  const CueList show =
      readShow("- {name: a, at: 0, look: {map: {id: 3}}}\n- {name: b, at: 1, look: {}}\n");
  EXPECT_THAT(flawsOfMaps(show, kUnknown), IsEmpty());
  EXPECT_THAT(flawsOfMaps(show, framesOf(30)), IsEmpty());
  const auto flaws = flawsOfMaps(show, framesOf(29));
  ASSERT_EQ(flaws.size(), 1U);
  EXPECT_EQ(textOf(flaws[0], "s"),
            "s:3: cue \"a\": map 3 ends at frame 29, and the cue would send frame 30; begin "
            "earlier in the map, or the next cue earlier");
  ASSERT_EQ(flawsOfMaps(show, framesOf(0)).size(), 1U);
  EXPECT_THAT(flawsOfMaps(show, framesOf(0))[0].what, HasSubstr("no video for map 3"));
}

TEST(MapFlaws, NoMapHasMoreFramesThanAPacketCanName) {
  const CueList last = readShow(
      "- {name: a, at: 0, hold: 0.01, look: {map: {id: 1, from: 65025}}}\n"
      "- {name: b, at: 0.01, look: {}}\n");
  EXPECT_THAT(flawsOfMaps(last, kUnknown), IsEmpty());
  const CueList beyond = readShow(
      "- {name: a, at: 0, look: {map: {id: 1, from: 65025}}}\n- {name: b, at: 1, look: {}}\n");
  ASSERT_EQ(flawsOfMaps(beyond, kUnknown).size(), 1U);
  EXPECT_THAT(flawsOfMaps(beyond, kUnknown)[0].what, HasSubstr("map 1 ends at frame 65025"));
}

TEST(CompiledShow, IsAScenarioWithRepeats) {
  const CueList show = readShow(
      "- {name: a, at: 0.5, look: {mode: 1}}\n- {name: b, at: 0.6, look: {}}\n"
      "- {name: c, at: 2, hold: 0.55, look: {mode: 1}}\n");
  const std::string text = scenarioOf(show, packetsOf(show, 7).value());
  EXPECT_EQ(text,
            "{\"at\":0,\"start\":true}\n"
            "{\"at\":0.5,\"packet\":\"09C90001000000FF0000000100000000000000000000000007"
            "00\"}\n"
            "{\"at\":0.6,\"packet\":\"09C90001000000FF000000000000000000000000000000000800\","
            "\"every\":0.1,\"until\":1.95}\n"
            "{\"at\":2,\"packet\":\"09C90001000000FF000000010000000000000000000000000900\","
            "\"every\":0.1,\"until\":2.5}\n");
  const auto parsed = parseScenario(text, ExactJsonReader());
  ASSERT_TRUE(std::holds_alternative<Scenario>(parsed));
  std::uint64_t heard = 0;
  for (const ScenarioLine& line : std::get<Scenario>(parsed).lines) {
    if (std::holds_alternative<PacketAction>(line.action)) heard += line.occurrences();
  }
  const ShowCount count = countOf(show, packetsOf(show, 7).value());
  EXPECT_EQ(count.transmissions, heard);
  EXPECT_EQ(count.packets, 3U);
  EXPECT_EQ(count.length, milliseconds(2550));
}

TEST(ShowWarnings, SayWhatMayNotBeMeant) {
  EXPECT_THAT(
      warningsOf(readShow("- {name: a, at: 0, hold: 1, look: {mode: 1}}\n"), kUnknown, nullptr),
      IsEmpty());
  EXPECT_THAT(
      warningsOf(readShow("- {name: a, at: 0, fade: 9, hold: 8, look: {palette: 3}}\n"
                          "- {name: b, look: {mode: 1, map: {id: 2}}}\n"),
                 kUnknown, nullptr),
      ElementsAre(HasSubstr("no hold"), HasSubstr("mode 0"), HasSubstr("longer than the cue"),
                  HasSubstr("waits for GO; compiled, it comes at 8"), HasSubstr("not known here")));
  auto nobody = parseCueList("cues:\n- {name: a, hold: 1, at: 0, look: {}}\n", {});
  EXPECT_THAT(warningsOf(std::get<CueList>(nobody), kUnknown, nullptr),
              ElementsAre(HasSubstr("application is 0")));
}

// As in a hall that was made from a ticket office's table, and has no palettes yet.
TEST(ShowWarnings, SayWhichPalettesTheAssetsLack) {
  const CueList show = readShow(
      "- {name: a, at: 0, look: {mode: 17, palette: 3}}\n"
      "- {name: b, at: 1, look: {mode: 17, palette: 4, colour: \"#102030\"}}\n"
      "- {name: c, at: 2, hold: 1, look: {mode: 1}}\n");
  const std::vector<NamedPalette> one = {{.id = 3, .name = "Sunrise", .colours = {"#FF4E50"}}};
  EXPECT_THAT(
      warningsOf(show, kUnknown, &one),
      ElementsAre(AllOf(HasSubstr("cue \"b\" has palette 4"), HasSubstr("colour #102030"))));
  const std::vector<NamedPalette> none;
  EXPECT_THAT(warningsOf(show, kUnknown, &none),
              ElementsAre(HasSubstr("palette 3"), HasSubstr("palette 4")));
  EXPECT_THAT(warningsOf(show, kUnknown, nullptr), IsEmpty());
}

}  // namespace
}  // namespace halvora
