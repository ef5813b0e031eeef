// SPDX-License-Identifier: Apache-2.0
#include "halvora/colour.h"

#include <gtest/gtest.h>

namespace halvora {
namespace {

TEST(HexColour, OrangeWithAHashSign) {
  EXPECT_EQ(colorFromHexString("#FF8000"), (Colour{1.0F, 128.0F / 255.0F, 0.0F, 1.0F}));
}

TEST(HexColour, WithoutTheHashSignTheFirstDigitIsLost) {
  EXPECT_EQ(colorFromHexString("FF8000"), (Colour{15.0F / 255.0F, 128.0F / 255.0F, 0.0F, 1.0F}));
}

TEST(HexColour, TheFirstCharacterIsSkippedWhateverItIs) {
  EXPECT_EQ(colorFromHexString("xFF0000"), (Colour{1, 0, 0, 1}));
  EXPECT_EQ(colorFromHexString(" 0000FF"), (Colour{0, 0, 1, 1}));
}

TEST(HexColour, AFirstCharacterOfSeveralBytesIsOneCharacter) {
  EXPECT_EQ(colorFromHexString("\xEF\xBC\x83"
                               "FF8000"),
            colourOfBytes(0xFF, 0x80, 0));
}

TEST(HexColour, DigitsOfBothCases) {
  EXPECT_EQ(colorFromHexString("#aBcDeF"), colourOfBytes(0xAB, 0xCD, 0xEF));
}

TEST(HexColour, FewerThanSixDigitsAreTheLowOnes) {
  EXPECT_EQ(colorFromHexString("#7"), colourOfBytes(0, 0, 7));
  EXPECT_EQ(colorFromHexString("#123"), colourOfBytes(0, 0x01, 0x23));
}

TEST(HexColour, ASeventhDigitShiftsTheChannels) {
  EXPECT_EQ(colorFromHexString("#FF80001"), colourOfBytes(0xF8, 0x00, 0x01));
}

TEST(HexColour, OfEightDigitsTheLastSixCount) {
  EXPECT_EQ(colorFromHexString("#12345678"), colourOfBytes(0x34, 0x56, 0x78));
}

TEST(HexColour, ANumberBeyond32BitsCountsAsTheLargest) {
  EXPECT_EQ(colorFromHexString("#100000000"), kWhite);
  EXPECT_EQ(colorFromHexString("#" + std::string(400, '1')), kWhite);
}

TEST(HexColour, ScanningStopsAtTheFirstOtherCharacter) {
  EXPECT_EQ(colorFromHexString("#12G456"), colourOfBytes(0, 0, 0x12));
  EXPECT_EQ(colorFromHexString("#FF 000"), colourOfBytes(0, 0, 0xFF));
  EXPECT_EQ(colorFromHexString("#-FF"), kBlack);
}

TEST(HexColour, WhatCannotBeReadIsBlack) {
  for (const char* text : {"", "#", "#zzzzzz", "#\xC3\xA4", "##FF0000"}) {
    EXPECT_EQ(colorFromHexString(text), (Colour{0, 0, 0, 1})) << text;
  }
}

TEST(DarkerColour, TakesSixTenthsOffEachChannelAndKeepsTheAlpha) {
  const MaybeColour darker = darkerColorForColor(Colour{0.5F, 0.9F, 0.2F, 1.0F});
  ASSERT_TRUE(darker);
  EXPECT_EQ(darker->red, 0.0F);
  EXPECT_NEAR(darker->green, 0.3F, 1e-6);
  EXPECT_EQ(darker->blue, 0.0F);
  EXPECT_EQ(darker->alpha, 1.0F);
}

TEST(DarkerColour, KeepsATranslucentAlpha) {
  EXPECT_EQ(darkerColorForColor(Colour{0, 0, 0, 0.25F}), MaybeColour(Colour{0, 0, 0, 0.25F}));
}

TEST(DarkerColour, ChannelsUpToSixTenthsBecomeExactlyZero) {
  EXPECT_EQ(darkerColorForColor(Colour{0.6F, 0.3F, 0.0F, 1.0F}), MaybeColour(kBlack));
}

TEST(DarkerColour, OfNoneIsNone) { EXPECT_EQ(darkerColorForColor(std::nullopt), std::nullopt); }

TEST(ColourOfBytes, DividesBy255) {
  EXPECT_EQ(colourOfBytes(255, 51, 0), (Colour{1.0F, 0.2F, 0.0F, 1.0F}));
}

TEST(Mix, BeginsAndEndsAtItsColours) {
  const Colour from{0, 1, 0.5F, 0};
  const Colour to{1, 0, 0.5F, 1};
  EXPECT_EQ(mix(from, to, 0), from);
  EXPECT_EQ(mix(from, to, 1), to);
  EXPECT_EQ(mix(from, to, 0.25F), (Colour{0.25F, 0.75F, 0.5F, 0.25F}));
}

}  // namespace
}  // namespace halvora
