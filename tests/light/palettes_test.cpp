// SPDX-License-Identifier: Apache-2.0
#include "light/palettes.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/virtual/virtual_devices.h"

namespace halvora {
namespace {

using Rule = ScriptedRandom::Rule;

constexpr Colour kRed{1, 0, 0, 1};
constexpr Colour kGreen{0, 1, 0, 1};
constexpr Colour kBlue{0, 0, 1, 1};
constexpr Colour kGrey{0.5F, 0.5F, 0.5F, 1};

std::vector<Palette> parse(const std::string& text) {
  const auto document = ExactJsonReader().parse(text, nullptr);
  EXPECT_TRUE(document) << text;
  return document ? parsePalettes(*document) : std::vector<Palette>{};
}

class PaletteChoice : public testing::Test {
 protected:
  void choose(std::uint32_t paletteId, const Colour& rgb = kGrey) {
    choosePaletteColour(state_, palettes_, random_, paletteId, rgb);
  }

  std::vector<Palette> palettes_{{1, {kRed, kGreen, kBlue}},
                                 {50, {kBlue}},
                                 {51, {kRed}},
                                 {1, {kWhite}},
                                 {0, {kWhite}},
                                 {-1, {kWhite}}};
  ScriptedRandom random_{Rule::greatest};
  ColourState state_;
};

TEST_F(PaletteChoice, ANewPaletteDrawsOneOfItsColours) {
  choose(1);
  EXPECT_EQ(state_.currentPaletteId, 1U);
  EXPECT_EQ(state_.colorsArray, &palettes_[0].colours);
  EXPECT_EQ(random_.log.entries, std::vector<std::uint32_t>{3});
  EXPECT_EQ(state_.currentPaletteIndex, 2U);
  EXPECT_EQ(state_.currentColour, MaybeColour(kBlue));
}

TEST_F(PaletteChoice, TheFirstPaletteOfAnIdCounts) {
  choose(1);
  EXPECT_EQ(state_.colorsArray, &palettes_[0].colours);
}

TEST_F(PaletteChoice, ThePaletteInForceKeepsTheColourDrawnLast) {
  choose(1);
  state_.currentColour = kRed;
  state_.currentPaletteIndex = 0;
  choose(1, kWhite);
  EXPECT_EQ(state_.currentColour, MaybeColour(kRed));
  EXPECT_EQ(state_.currentPaletteIndex, 0U);
  EXPECT_EQ(random_.log.entries.size(), 1U);
}

TEST_F(PaletteChoice, Id50IsAPalette) {
  choose(50);
  EXPECT_EQ(state_.currentColour, MaybeColour(kBlue));
}

TEST_F(PaletteChoice, Id51Or0NeverLooksUpAPalette) {
  choose(51);
  EXPECT_EQ(state_.currentPaletteId, 51U);
  EXPECT_EQ(state_.colorsArray, nullptr);
  EXPECT_EQ(state_.currentColour, MaybeColour(kGrey));
  choose(0, kGreen);
  EXPECT_EQ(state_.currentPaletteId, 0U);
  EXPECT_EQ(state_.colorsArray, nullptr);
  EXPECT_EQ(state_.currentColour, MaybeColour(kGreen));
  EXPECT_TRUE(random_.log.entries.empty());
}

TEST_F(PaletteChoice, TheSameIdOutsideThePalettesTakesTheNewColour) {
  for (const std::uint32_t id : {0U, 51U, 255U}) {
    choose(id, kRed);
    choose(id, kGreen);
    EXPECT_EQ(state_.currentColour, MaybeColour(kGreen)) << id;
    EXPECT_EQ(state_.colorsArray, nullptr);
  }
}

TEST_F(PaletteChoice, AnUnknownPaletteFallsBackToTheCommandsColour) {
  choose(1);
  choose(7, kGreen);
  EXPECT_EQ(state_.currentPaletteId, 7U);
  EXPECT_EQ(state_.colorsArray, nullptr);
  EXPECT_EQ(state_.currentColour, MaybeColour(kGreen));
}

TEST_F(PaletteChoice, AnUnknownPaletteInForceKeepsItsFirstColour) {
  choose(7, kGreen);
  choose(7, kRed);
  EXPECT_EQ(state_.currentColour, MaybeColour(kGreen));
}

TEST_F(PaletteChoice, LeavingThePalettesForgetsTheirColours) {
  choose(1);
  choose(0, kGreen);
  EXPECT_EQ(state_.colorsArray, nullptr);
  EXPECT_EQ(state_.currentColour, MaybeColour(kGreen));
}

TEST_F(PaletteChoice, WithoutAnyPalettesEveryIdFallsBack) {
  palettes_.clear();
  for (std::uint32_t id = 0; id <= 255; ++id) {
    choose(id, kBlue);
    ASSERT_EQ(state_.currentColour, MaybeColour(kBlue)) << id;
    ASSERT_EQ(state_.colorsArray, nullptr);
  }
}

struct NextColour {
  std::uint32_t index;
  std::uint32_t drawn;
  std::uint32_t next;
};

class NextPaletteColour : public testing::TestWithParam<NextColour> {};

TEST_P(NextPaletteColour, NeverStaysWhereItWas) {
  const std::vector<Colour> colours{kRed, kGreen, kBlue, kWhite, kGrey};
  ColourState state;
  state.colorsArray = &colours;
  state.currentPaletteIndex = GetParam().index;
  ScriptedRandom random(Rule::least, {GetParam().drawn});
  setNextPaletteColor(state, random);
  EXPECT_EQ(state.currentPaletteIndex, GetParam().next);
  EXPECT_EQ(state.currentColour, MaybeColour(colours[GetParam().next]));
  EXPECT_EQ(random.log.entries, std::vector<std::uint32_t>{5});
}

INSTANTIATE_TEST_SUITE_P(Index0Draw0, NextPaletteColour, testing::Values(NextColour{0, 0, 1}));
INSTANTIATE_TEST_SUITE_P(Index3Draw3, NextPaletteColour, testing::Values(NextColour{3, 3, 2}));
INSTANTIATE_TEST_SUITE_P(LastDrawLast, NextPaletteColour, testing::Values(NextColour{4, 4, 3}));
INSTANTIATE_TEST_SUITE_P(Others, NextPaletteColour,
                         testing::Values(NextColour{0, 1, 1}, NextColour{0, 4, 4},
                                         NextColour{1, 1, 0}, NextColour{4, 0, 0},
                                         NextColour{2, 3, 3}));

TEST(NextPaletteColourGuards, OneColourStaysAtIndex0) {
  const std::vector<Colour> colours{kRed};
  ColourState state;
  state.colorsArray = &colours;
  ScriptedRandom random;
  for (int count = 0; count < 3; ++count) {
    setNextPaletteColor(state, random);
    EXPECT_EQ(state.currentPaletteIndex, 0U);
    EXPECT_EQ(state.currentColour, MaybeColour(kRed));
  }
}

TEST(NextPaletteColourGuards, TwoColoursAlternateWhateverIsDrawn) {
  const std::vector<Colour> colours{kRed, kGreen};
  ColourState state;
  state.colorsArray = &colours;
  ScriptedRandom random(Rule::least, {0, 0, 1, 0, 0});
  std::vector<std::uint32_t> indices;
  for (int count = 0; count < 5; ++count) {
    setNextPaletteColor(state, random);
    indices.push_back(state.currentPaletteIndex);
  }
  EXPECT_EQ(indices, (std::vector<std::uint32_t>{1, 0, 1, 0, 1}));
}

TEST(NextPaletteColourGuards, WithoutAPaletteNothingHappens) {
  ColourState state;
  state.currentColour = kGreen;
  state.currentPaletteIndex = 4;
  ScriptedRandom random;
  setNextPaletteColor(state, random);
  EXPECT_EQ(state.currentColour, MaybeColour(kGreen));
  EXPECT_EQ(state.currentPaletteIndex, 4U);
  EXPECT_TRUE(random.log.entries.empty());
}

TEST(NextPaletteColourGuards, NeverRepeatsOverManyDraws) {
  const std::vector<Colour> colours{kRed, kGreen, kBlue};
  ColourState state;
  state.colorsArray = &colours;
  SeededRandom random(9);
  for (int count = 0; count < 1000; ++count) {
    const std::uint32_t before = state.currentPaletteIndex;
    setNextPaletteColor(state, random);
    ASSERT_NE(state.currentPaletteIndex, before);
    ASSERT_LT(state.currentPaletteIndex, 3U);
  }
}

TEST(PaletteDocument, IdsAndColoursInItsOrder) {
  const auto palettes = parse(
      R"({"palettes": [{"id": 2, "colours": ["#FF0000", "#00FF00"]},
                       {"id": 1, "colours": ["#0000FF"]}]})");
  ASSERT_EQ(palettes.size(), 2U);
  EXPECT_EQ(palettes[0].id, 2);
  EXPECT_EQ(palettes[0].colours, (std::vector<Colour>{kRed, kGreen}));
  EXPECT_EQ(palettes[1].id, 1);
  EXPECT_EQ(palettes[1].colours, std::vector<Colour>{kBlue});
}

TEST(PaletteDocument, AnIdCountsByItsIntegerValue) {
  const auto palettes = parse(R"({"palettes": [{"id": 3.9, "colours": ["#FF0000"]},
      {"id": 1e1, "colours": ["#FF0000"]}, {"id": true, "colours": ["#FF0000"]}]})");
  ASSERT_EQ(palettes.size(), 3U);
  EXPECT_EQ(palettes[0].id, 3);
  EXPECT_EQ(palettes[1].id, 10);
  EXPECT_EQ(palettes[2].id, 1);
}

TEST(PaletteDocument, AColourThatIsNotHexIsBlack) {
  const auto palettes = parse(R"({"palettes": [{"id": 1, "colours": ["red", "", 7, null, []]}]})");
  ASSERT_EQ(palettes.size(), 1U);
  // The first character of "red" is skipped; "ed" is a number.
  EXPECT_EQ(palettes[0].colours,
            (std::vector<Colour>{colourOfBytes(0, 0, 0xED), kBlack, kBlack, kBlack, kBlack}));
}

TEST(PaletteDocument, APaletteWithoutColoursFallsBackToTheCommandsColour) {
  const auto palettes = parse(R"({"palettes": [{"id": 1}, {"id": 2, "colours": []},
      {"id": 3, "colours": "#FF0000"}, {"id": 4, "colours": {"0": "#FF0000"}}]})");
  ScriptedRandom random;
  for (std::uint32_t id = 1; id <= 4; ++id) {
    ColourState state;
    choosePaletteColour(state, palettes, random, id, kGrey);
    EXPECT_EQ(state.colorsArray, nullptr) << id;
    EXPECT_EQ(state.currentColour, MaybeColour(kGrey)) << id;
  }
}

TEST(PaletteDocument, HostileDocumentsYieldNoPalette) {
  for (const char* text :
       {"{}", "[]", R"({"palettes": null})", R"({"palettes": 7})", R"({"palettes": {"id": 1}})",
        R"({"palettes": [1, "a", null, true, [], {}]})", R"({"Palettes": [{"id": 1}]})",
        R"({"palettes": [{"id": null, "colours": ["#FF0000"]}]})",
        R"([{"palettes": [{"id": 1, "colours": ["#FF0000"]}]}])",
        R"({"palettes": [{"id": {}, "colours": ["#FF0000"]}]})"}) {
    EXPECT_TRUE(parse(text).empty()) << text;
  }
}

TEST(PaletteDocument, AnIdBeyond64BitsIsNobodys) {
  const auto palettes =
      parse(R"({"palettes": [{"id": 18446744073709551617, "colours": ["#FF0000"]}]})");
  ColourState state;
  ScriptedRandom random;
  choosePaletteColour(state, palettes, random, 1, kGrey);
  EXPECT_EQ(state.colorsArray, nullptr);
}

}  // namespace
}  // namespace halvora
