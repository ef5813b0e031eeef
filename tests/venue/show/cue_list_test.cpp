// SPDX-License-Identifier: Apache-2.0
// Which shows are read, what they come to, and what is said of those that are not.
#include "venue/show/cue_list.h"

#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "venue/show/cue_values.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::vector<NamedPalette> kPalettes = {{1, "Ember", {}}, {12, "Deep Sea", {}}};

CueList readShow(const std::string& text) {
  auto parsed = parseCueList(text, kPalettes);
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&parsed)) {
    for (const CueListFlaw& flaw : *flaws) ADD_FAILURE() << textOf(flaw, "show");
    return {};
  }
  return std::get<CueList>(std::move(parsed));
}

std::vector<std::string> flawsOf(const std::string& text) {
  std::vector<std::string> lines;
  auto parsed = parseCueList(text, kPalettes);
  if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&parsed)) {
    for (const CueListFlaw& flaw : *flaws) lines.push_back(textOf(flaw, "s"));
  }
  return lines;
}

Broadcast lookOf(const std::string& look) {
  const CueList show = readShow("cues:\n  - {name: a, look: {" + look + "}}\n");
  return show.cues.empty() ? Broadcast() : show.cues[0].look.packet;
}

TEST(CueList, ReadsAWholeShow) {
  const CueList show = readShow(R"(# A comment.
application: 4242
venue: 7
transmitter: 3
repeat: 0.25
looks:
  warm: &warm {mode: steady, colour: "#FFb46B", master: 50 %}
cues:
  - name: Doors
    at: 1.5
    look: warm
  - name: By hand   # waits for GO
    look: *warm
    hold: 2
  - name: Map
    at: "1:02.5"
    fade: 1
    transmitter: 255
    look: {mode: 1, map: {id: 2, from: 500, rate: 12.5}}
)");
  EXPECT_EQ(show.repeat, milliseconds(250));
  ASSERT_EQ(show.cues.size(), 3U);
  const Broadcast warm{.applicationId = 4242,
                       .venueId = 7,
                       .master = 128,
                       .red = 255,
                       .green = 0xB4,
                       .blue = 0x6B,
                       .mode = 1,
                       .transmitter = 3};
  EXPECT_EQ(show.cues[0].name, "Doors");
  EXPECT_EQ(show.cues[0].line, 9U);
  EXPECT_EQ(show.cues[0].at, milliseconds(1500));
  EXPECT_EQ(show.cues[0].look.packet, warm);
  EXPECT_FALSE(show.cues[1].at);
  EXPECT_EQ(show.cues[1].hold, milliseconds(2000));
  EXPECT_EQ(show.cues[1].look.packet, warm);
  EXPECT_EQ(show.cues[2].at, milliseconds(62500));
  EXPECT_EQ(show.cues[2].fade, milliseconds(1000));
  EXPECT_EQ(show.cues[2].look.packet.transmitter, 255);
  EXPECT_EQ(show.cues[2].look.packet.pixelMapId, 2);
  ASSERT_TRUE(show.cues[2].look.map);
  EXPECT_EQ(show.cues[2].look.map->from, 500);
  EXPECT_EQ(show.cues[2].look.map->rate, 12.5);
  EXPECT_EQ(cueNamed(show, "By hand"), 1U);
  EXPECT_FALSE(cueNamed(show, "by hand"));
}

TEST(CueList, WhatALookDoesNotSayIsNought) {
  EXPECT_EQ(lookOf("speed: 0"), Broadcast{.master = 255});
}

TEST(CueList, TakesNamesAndNumbersAlike) {
  EXPECT_EQ(lookOf("mode: Flash-bulbs"), lookOf("mode: 3"));
  EXPECT_EQ(lookOf("mode: 20").mode, 20);
  EXPECT_EQ(lookOf("palette: deep sea"), lookOf("palette: 12"));
  EXPECT_EQ(lookOf("torch: {mode: pixel_map, speed: 100 %, still: 258}"),
            lookOf("torch: {mode: 9, speed: 255, still: 258}"));
  const Broadcast still = lookOf("torch: {mode: 9, still: 258}");
  EXPECT_EQ(still.minutes, 2);
  EXPECT_EQ(still.seconds, 1);
  EXPECT_EQ(lookOf("vibrate: Buzz").vibrate, 3);
  EXPECT_EQ(lookOf("gobo: 200").gobo, 200);
  EXPECT_EQ(lookOf("gobo: none").gobo, 0);
}

TEST(CueValues, ANumberBelowTenHasBoundsToo) {
  const char* const names[] = {"a", "b", "c", "d"};
  EXPECT_EQ(choiceOf("3", names), 3);
  EXPECT_FALSE(choiceOf("4", names));
  EXPECT_FALSE(choiceOf("9", names));
}

TEST(CueValues, LevelsAndTimes) {
  EXPECT_EQ(levelByteOf("0"), 0);
  EXPECT_EQ(levelByteOf("255"), 255);
  EXPECT_EQ(levelByteOf("100%"), 255);
  EXPECT_EQ(levelByteOf("50 %"), 128);
  EXPECT_EQ(levelByteOf("1 %"), 3);
  for (const char* bad : {"", "256", "-1", "101 %", "-1 %", "%", "half", "1.5", "nan %"}) {
    EXPECT_FALSE(levelByteOf(bad)) << bad;
  }
  EXPECT_EQ(showTimeOf("2"), milliseconds(2000));
  EXPECT_EQ(showTimeOf("0.0004"), milliseconds(0));
  EXPECT_EQ(showTimeOf("3:05"), milliseconds(185000));
  EXPECT_EQ(showTimeOf("0:59.25"), milliseconds(59250));
  EXPECT_EQ(showTimeOf("75:00.001"), milliseconds(4500001));
  for (const char* bad : {"", "-1", "1:5", "1:60", ":30", "1:05.", "1:05.1234", "1:2:03", "400000",
                          "9999:00", "1:-5", "soon"}) {
    EXPECT_FALSE(showTimeOf(bad)) << bad;
  }
  EXPECT_EQ(showTimeText(milliseconds(62500)), "1:02.5");
  EXPECT_EQ(showTimeText(milliseconds(2500)), "2.5");
}

struct Refused {
  const char* name;
  std::string show;
  /// Of the one line.
  std::vector<std::string> parts;
};
void PrintTo(const Refused& refused, std::ostream* stream) { *stream << refused.show; }

std::string oneCue(const std::string& keys) {
  return "cues:\n- name: Finale\n  look: {}\n  " + keys + "\n";
}
std::string oneLook(const std::string& keys) {
  return "cues:\n- name: Finale\n  look:\n    " + keys + "\n";
}

class CueListRefused : public testing::TestWithParam<Refused> {};

TEST_P(CueListRefused, SaysWhereAndWhatWouldBeRight) {
  const auto flaws = flawsOf(GetParam().show);
  ASSERT_EQ(flaws.size(), 1U) << testing::PrintToString(flaws);
  for (const std::string& part : GetParam().parts) EXPECT_THAT(flaws[0], HasSubstr(part));
}

INSTANTIATE_TEST_SUITE_P(
    Shows, CueListRefused,
    testing::Values(
        Refused{"empty", "", {"s:1: ", "keys"}}, Refused{"noYaml", "a: [", {"s:2: not YAML"}},
        Refused{"noText", "a: \n\n\xFF", {"s:3: not YAML"}},
        Refused{"twoDocuments", "venue: 1\n---\nvenue: 2\n", {"s:2: ", "second document"}},
        Refused{"twice", "venue: 1\nvenue: 2\n", {"s:2: \"venue\"", "second time (line 1)"}},
        Refused{"noCues", "venue: 1\n", {"s:1: has no \"cues\""}},
        Refused{"emptyCues", "cues: []\n", {"s:1: \"cues\" must be a list"}},
        Refused{"unknownAlias", "cues: *x\n", {"s:1: *x has no &x"}},
        Refused{"ownAlias", "cues: &x [*x]\n", {"s:1: *x has no &x"}},
        Refused{"deep", "looks: " + std::string(40, '['), {"s:1: nested too deeply"}},
        Refused{"unknownKey", "venu: 1\n" + oneCue(""), {"s:1: unknown key \"venu\"", "venue"}},
        Refused{"application", "application: 65536\n" + oneCue(""), {"s:1: ", "0 to 65535"}},
        Refused{"venue", "venue: 256\n" + oneCue(""), {"s:1: ", "0 to 255, not \"256\""}},
        Refused{"repeat", "repeat: 0\n" + oneCue(""), {"s:1: ", "0.02 to 10.24"}},
        Refused{"cueKey", oneCue("after: 1"), {"s:4: cue \"Finale\": unknown key \"after\""}},
        Refused{"noName", "cues:\n- look: {}\n", {"s:2: cue 1: ", "\"name\""}},
        Refused{"noLook", "cues:\n- name: a\n", {"s:2: cue \"a\": has no \"look\""}},
        Refused{"sameName",
                "cues:\n- {name: a, look: {}}\n- {name: a, look: {}}\n",
                {"s:3: cue \"a\": line 2"}},
        Refused{"noLookOfThatName",
                "looks: {red: {}}\ncues:\n- {name: a, look: blue}\n",
                {"s:3: cue \"a\": ", "(red)", "not \"blue\""}},
        Refused{"at", oneCue("at: -1"), {"s:4: cue \"Finale\": \"at\"", "not \"-1\""}},
        Refused{"hold", oneCue("hold: [1]"), {"s:4: cue \"Finale\": \"hold\"", "a list"}},
        Refused{"backwards",
                "cues:\n- {name: a, at: 10, look: {}}\n- {name: b, look: {}}\n"
                "- {name: c, at: 9.999, look: {}}\n",
                {"s:4: cue \"c\": at 9.999 comes before cue \"a\" at 10"}},
        Refused{
            "mode", oneLook("mode: 21"), {"s:4: cue \"Finale\": \"mode\"", "0 to 20", "Strobe"}},
        Refused{"modeName", oneLook("mode: Glow"), {"not \"Glow\""}},
        Refused{"colour", oneLook("colour: \"#12345\""), {"\"#rrggbb\""}},
        Refused{"colourAsComment", oneLook("colour: #ff0000"), {"in quotes", "it is empty"}},
        Refused{"palette", oneLook("palette: Mauve"), {"0 to 50 or one of Ember, Deep Sea"}},
        Refused{"paletteNumber", oneLook("palette: 51"), {"0 to 50"}},
        Refused{"speed", oneLook("speed: 256"), {"\"speed\"", "0 to 255"}},
        Refused{"master", oneLook("master: 120 %"), {"\"master\"", "100 %"}},
        Refused{"gobo", oneLook("gobo: 256"), {"\"gobo\"", "0 to 255"}},
        Refused{"torchKey", oneLook("torch: {mod: 1}"), {"unknown key \"mod\"", "mode, speed"}},
        Refused{"torchNoKeys", oneLook("torch: 1"), {"\"torch\"", "mode, speed"}},
        Refused{"vibrate", oneLook("vibrate: 4"), {"0 to 3 or one of None, Light tap"}},
        Refused{"mapWithoutId", oneLook("map: {from: 3}"), {"must have an \"id\""}},
        Refused{"mapFrame", oneLook("map: {id: 1, from: 0}"), {"\"from\"", "1 to 65025"}},
        Refused{"mapRate", oneLook("map: {id: 1, rate: 101}"), {"\"rate\"", "0.1 to 100"}},
        Refused{"mapAndStill", oneLook("{map: {id: 1}, torch: {still: 1}}"), {"one of them"}},
        Refused{
            "lookByName", "looks: {a: {mode: x}}\n" + oneCue(""), {"s:1: look \"a\": \"mode\""}}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(CueList, TellsAllFaultsByTheirLines) {
  EXPECT_THAT(
      flawsOf("cues:\n- name: a\n  look: {mode: 99}\n- name: b\n  at: x\n  look: c\n"
              "venue: -1\n"),
      ElementsAre(HasSubstr("s:3: cue \"a\": \"mode\""), HasSubstr("s:5: cue \"b\": \"at\""),
                  HasSubstr("s:6: cue \"b\": \"look\""), HasSubstr("s:7: \"venue\"")));
}

TEST(CueList, NamesNoMoreFaultsThanAnybodyReads) {
  std::string show = "cues:\n";
  for (int cue = 0; cue < 1000; ++cue) show += "- {}\n";
  EXPECT_EQ(flawsOf(show).size(), 100U);
}

TEST(CueList, AnAliasCostsNoMoreThanItsPlace) {
  // Each level names the one below it nine times: written out that is half a million looks.
  std::string show = "looks:\n  a0: &a0 {mode: 1}\n";
  for (int level = 1; level < 7; ++level) {
    const std::string below = "*a" + std::to_string(level - 1);
    show += "  a" + std::to_string(level) + ": &a" + std::to_string(level) + " [";
    for (int at = 0; at < 9; ++at) show += below + " , ";
    show += "]\n";
  }
  EXPECT_EQ(flawsOf(show).size(), 7U);
}

}  // namespace
}  // namespace halvora
