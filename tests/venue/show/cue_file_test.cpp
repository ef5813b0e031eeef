// SPDX-License-Identifier: Apache-2.0
// A show file that is edited: its author's comments and layout stay, and a change says what was
// meant or nothing.
#include "venue/show/cue_file.h"

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/standard_files.h"
#include "tests/support/source_tree.h"
#include "venue/show/show_words.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const kShow =
    "# Für Grüße: one comment of every kind.\n"
    "application: 1   # ours\n"
    "looks:\n"
    "  warm: {mode: 1, colour: \"#ffb46b\"}\n"
    "cues:\n"
    "  # The doors, mit Ümlauten.\n"
    "  - name: Türen  # open\n"
    "    look: warm # not too bright\n"
    "  - at: 0 # the song\n"
    "    name: Song\n"
    "    look:\n"
    "      mode: 2  # scattered\n"
    "      speed: 40\n"
    "    hold: 3\n"
    "\n"
    "  - {name: End, at: 10, look: warm}\n";

class CueFileTest : public testing::Test {
 protected:
  CueFile open(std::string text) {
    auto read = CueFile::read(std::move(text), names);
    if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&read)) {
      ADD_FAILURE() << textOf(flaws->front(), "show.yaml");
    }
    return std::get<CueFile>(std::move(read));
  }
  static CueFile of(const CueFile::Result& result) {
    if (const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&result)) {
      ADD_FAILURE() << textOf(flaws->front(), "show.yaml");
    }
    return std::get<CueFile>(result);
  }
  static std::string flawOf(const CueFile::Result& result) {
    const auto* flaws = std::get_if<std::vector<CueListFlaw>>(&result);
    return flaws == nullptr ? "none" : textOf(flaws->front(), "show.yaml");
  }
  // What the change has made of the text: the one place where they differ.
  static std::pair<std::string, std::string> difference(const std::string& before,
                                                        const std::string& after) {
    std::size_t head = 0;
    while (head < before.size() && head < after.size() && before[head] == after[head]) ++head;
    std::size_t tail = 0;
    while (tail < before.size() - head && tail < after.size() - head &&
           before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) {
      ++tail;
    }
    return {before.substr(head, before.size() - head - tail),
            after.substr(head, after.size() - head - tail)};
  }
  using Difference = std::pair<std::string, std::string>;

  ShowNames names{{}, [](int, int) { return std::optional<int>(); }};
};

TEST_F(CueFileTest, AChangeTouchesTheBytesOfItsValueAlone) {
  const CueFile file = open(kShow);
  const CueFile renamed = of(file.with(0, "name", yamlText("Einlass"), names));
  EXPECT_EQ(renamed.show().cues[0].name, "Einlass");
  EXPECT_EQ(difference(kShow, renamed.text()), Difference("Türen", "\"Einlass\""));
  EXPECT_THAT(renamed.lostComments(), IsEmpty());
  const CueFile::Result later = file.with(2, "at", "\"0:20\"", names);
  EXPECT_EQ(of(later).show().cues[2].at, milliseconds(20000));
  EXPECT_EQ(difference(kShow, of(later).text()), Difference("10", "\"0:20\""));
}

TEST_F(CueFileTest, AByteOrderMarkStaysInFront) {
  const std::string marked = std::string("\xEF\xBB\xBF") + kShow;
  const CueFile file = open(marked);
  const CueFile renamed = of(file.with(0, "name", yamlText("Einlass"), names));
  EXPECT_EQ(difference(marked, renamed.text()), Difference("Türen", "\"Einlass\""));
}

TEST_F(CueFileTest, AKeyThatIsNotThereComesBeforeTheLook) {
  const CueFile file = open(kShow);
  EXPECT_THAT(of(file.with(0, "fade", "2.5", names)).text(),
              HasSubstr("Türen  # open\n    fade: 2.5\n    look: warm # not"));
  EXPECT_THAT(of(file.with(2, "fade", "2.5", names)).text(),
              HasSubstr("at: 10, fade: 2.5, look: warm}"));
  EXPECT_THAT(of(file.with(1, "hold", "5", names)).text(), HasSubstr("    hold: 5\n"));
  const CueFile dash = open("cues:\n- look: {mode: 1}\n  name: a\n");
  EXPECT_EQ(of(dash.with(0, "fade", "1", names)).text(),
            "cues:\n- fade: 1\n  look: {mode: 1}\n  name: a\n");
}

TEST_F(CueFileTest, AKeyThatGoesTakesItsLineAndLeavesComments) {
  const CueFile file = open(kShow);
  const CueFile::Result byHand = file.with(1, "at", "", names);
  EXPECT_FALSE(of(byHand).show().cues[1].at);
  EXPECT_THAT(of(byHand).text(), HasSubstr("  -  # the song\n    name: Song\n"));
  EXPECT_THAT(of(file.with(1, "hold", "", names)).text(), HasSubstr("speed: 40\n\n  - {name"));
  EXPECT_THAT(of(file.with(2, "at", "", names)).text(), HasSubstr("{name: End, look: warm}"));
  // What is not there may go.
  EXPECT_EQ(of(file.with(0, "fade", "", names)).text(), kShow);
}

TEST_F(CueFileTest, ALookBecomesTheCuesOwnAndItsCommentsAreSaid) {
  const CueFile file = open(kShow);
  const CueFile::Result own = file.with(0, "look", "{mode: 5}", names);
  EXPECT_EQ(of(own).show().cues[0].look.packet.mode, 5);
  EXPECT_EQ(of(own).show().cues[2].look.packet.mode, 1);
  EXPECT_THAT(of(own).lostComments(), IsEmpty());
  EXPECT_THAT(of(own).text(), HasSubstr("look: {mode: 5} # not too bright\n"));
  const CueFile::Result block = file.with(1, "look", "{mode: 6}", names);
  EXPECT_EQ(of(block).show().cues[1].look.packet.mode, 6);
  EXPECT_THAT(of(block).lostComments(), ElementsAre("# scattered"));
  EXPECT_THAT(of(of(block).with(0, "fade", "1", names)).lostComments(), ElementsAre("# scattered"));
}

TEST_F(CueFileTest, CuesComeAndGo) {
  CueLook look;
  look.packet.mode = 4;
  look.packet.master = 0x80;
  for (const char* text :
       {kShow, "cues:\n- name: a\n  look: {}",
        "cues: [{name: a, look: {}}, {name: b, at: 1, look: {}}]  # all\n",
        "cues:\r\n    - name: a\r\n      look: {}\r\n    - name: b\r\n      look: {}\r\n"}) {
    const CueFile file = open(text);
    for (std::size_t at = 0; at < file.show().cues.size(); ++at) {
      const CueFile::Result more = file.withCueAfter(at, "it's \"new\"", look, names);
      ASSERT_EQ(flawOf(more), "none") << text;
      const Cue fresh = of(more).show().cues[at + 1];
      EXPECT_EQ(fresh.name, "it's \"new\"");
      EXPECT_EQ(fresh.look.packet.master, 0x80);
      const CueFile::Result less = of(more).withoutCue(at + 1, names);
      ASSERT_EQ(flawOf(less), "none") << text;
      EXPECT_EQ(of(less).show().cues.size(), file.show().cues.size());
      EXPECT_THAT(of(less).lostComments(), IsEmpty());
    }
  }
  EXPECT_THAT(of(open(kShow).withoutCue(0, names)).lostComments(),
              ElementsAre("# open", "# not too bright"));
  EXPECT_THAT(flawOf(open("cues: [{name: a, look: {}}]").withoutCue(0, names)),
              HasSubstr("must be a list of 1 to"));
}

TEST_F(CueFileTest, WhatIsWrongIsSaidWithItsLineAndChangesNothing) {
  const CueFile file = open(kShow);
  EXPECT_THAT(flawOf(file.with(2, "at", "soon", names)), HasSubstr("show.yaml:16: cue \"End\""));
  EXPECT_THAT(flawOf(file.with(2, "name", "Song", names)), HasSubstr("has a cue of this name"));
  EXPECT_THAT(flawOf(file.with(1, "at", "11", names)), HasSubstr("times must not go back"));
  EXPECT_EQ(file.text(), kShow);
  // Others mean what it says.
  const CueFile anchored = open("cues:\n- name: a\n  look: &x {mode: 1}\n- name: b\n  look: *x\n");
  EXPECT_THAT(flawOf(anchored.with(0, "look", "{mode: 2}", names)), HasSubstr("*x has no &x"));
  EXPECT_EQ(of(anchored.with(1, "look", "{mode: 2}", names)).text(),
            "cues:\n- name: a\n  look: &x {mode: 1}\n- name: b\n  look: {mode: 2}\n");
  // A value that would be more than one.
  EXPECT_NE(flawOf(file.with(0, "fade", "1\n    at: 3", names)), "none");
  EXPECT_NE(flawOf(file.with(2, "fade", "1}\n  - {name: x, look: warm", names)), "none");
  EXPECT_THAT(flawOf(file.with(2, "fade", "1, look: warm}\n  - {name: x", names)),
              HasSubstr("cannot be changed here"));
}

TEST_F(CueFileTest, ALayoutThatItDoesNotKnowIsLeftAlone) {
  const CueFile file = open("cues:\n- ? look\n  : {mode: 1}\n  ? name\n  : a\n");
  EXPECT_THAT(flawOf(file.with(0, "fade", "1", names)), HasSubstr("edit the file"));
  EXPECT_THAT(flawOf(open("cues:\n-\n  name: a\n  look: {}\n").withoutCue(0, names)),
              HasSubstr("edit the file"));
}

// By name only where the name is read as that palette again.
TEST_F(CueFileTest, ALooksPaletteIsWrittenAsItIsReadAgain) {
  names.palettes = {{3, "Blue", {}}, {9, "blue", {}}, {4, "7", {}}, {5, "Ember", {}}, {6, "", {}}};
  CueLook look;
  look.packet.mode = 1;
  for (const std::uint8_t id : std::to_array<std::uint8_t>({3, 9, 4, 5, 6, 8})) {
    look.packet.paletteId = id;
    const CueFile file = open("cues:\n- {name: a, look: " + yamlLook(look, names.palettes) + "}\n");
    EXPECT_EQ(file.show().cues[0].look.packet.paletteId, id) << file.text();
  }
  look.packet.paletteId = 5;
  EXPECT_THAT(yamlLook(look, names.palettes), HasSubstr("Ember"));
}

TEST_F(CueFileTest, ModesAreWrittenByTheirNames) {
  CueLook look;
  for (std::size_t mode = 0; mode < kModeNames.size(); ++mode) {
    look.packet.mode = static_cast<std::uint8_t>(mode);
    EXPECT_THAT(yamlLook(look, {}), HasSubstr(kModeNames[mode])) << mode;
  }
}

// Whatever a look says is read again as it was said, each of its values at its ends too.
TEST_F(CueFileTest, AnyLookIsWrittenAsItIsReadAgain) {
  std::mt19937 chance(5);
  const auto below = [&chance](unsigned count) {
    const auto drawn = static_cast<unsigned>(chance() % (count + 2));
    return static_cast<std::uint8_t>(drawn < count ? drawn : drawn == count ? 0 : count - 1);
  };
  for (int round = 0; round < 300; ++round) {
    CueLook look;
    Broadcast& packet = look.packet;
    packet.mode = below(21);
    packet.red = below(256);
    packet.green = below(256);
    packet.blue = below(2) == 0 ? 0 : below(256);
    packet.paletteId = below(51);
    packet.speed = below(256);
    packet.master = below(256);
    packet.gobo = below(256);
    packet.ledMode = below(10);
    packet.ledSpeed = below(256);
    packet.vibrate = below(4);
    if (below(2) == 0) {
      look.map = CueMap{static_cast<std::uint8_t>(1 + below(255)), 1 + below(200) * 50,
                        1 + below(30) / 4.0};
    } else {
      packet.minutes = below(2) == 0 ? 0 : below(256);
      packet.seconds = below(2) == 0 ? 0 : below(4);
    }
    const std::string text = yamlLook(look, names.palettes);
    const CueFile file = open("cues:\n- {name: a, look: " + text + "}\n");
    ASSERT_EQ(file.show().cues.size(), 1U) << text;
    const CueLook& read = file.show().cues[0].look;
    EXPECT_EQ(read.map, look.map) << text;
    for (std::uint8_t Broadcast::*const field :
         {&Broadcast::mode, &Broadcast::red, &Broadcast::green, &Broadcast::blue,
          &Broadcast::paletteId, &Broadcast::speed, &Broadcast::master, &Broadcast::gobo,
          &Broadcast::ledMode, &Broadcast::ledSpeed, &Broadcast::vibrate, &Broadcast::minutes,
          &Broadcast::seconds}) {
      EXPECT_EQ(read.packet.*field, packet.*field) << text;
    }
    EXPECT_EQ(yamlLook(read, names.palettes), text);
  }
}

// Every cue of the shows that people start from, every key.
TEST_F(CueFileTest, TheDemosShowsCanBeEditedThroughout) {
  const std::string assets = sourceTree() + "/assets/demo";
  names.palettes = readPaletteNames(assets, ExactJsonReader());
  for (const char* name : {"/example-show.yaml", "/pixel-map-show.yaml"}) {
    const auto text = readFile(assets + name, kLargestCueList);
    ASSERT_TRUE(text);
    const CueFile file = open(*text);
    for (std::size_t at = 0; at < file.show().cues.size(); ++at) {
      const Cue& cue = file.show().cues[at];
      const CueFile::Result same = file.with(at, "look", yamlLook(cue.look, names.palettes), names);
      ASSERT_EQ(flawOf(same), "none");
      EXPECT_EQ(of(same).show().cues[at].look, cue.look) << of(same).text();
      EXPECT_EQ(of(of(file.with(at, "fade", "0.3", names)).with(at, "fade", "", names))
                    .show()
                    .cues[at]
                    .fade,
                Duration{});
      EXPECT_EQ(flawOf(file.with(at, "name", yamlText("x"), names)), "none");
      EXPECT_EQ(flawOf(file.withCueAfter(at, "x", cue.look, names)), "none");
      EXPECT_EQ(flawOf(file.withoutCue(at, names)), "none");
    }
  }
}

}  // namespace
}  // namespace halvora
