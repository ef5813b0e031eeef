// SPDX-License-Identifier: Apache-2.0
#include "engine/broadcast.h"

#include <numeric>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

using B = Broadcast;

std::vector<std::uint8_t> bytesOf(const Broadcast& broadcast) {
  const BroadcastBytes data = encodeBroadcast(broadcast);
  return {data.begin(), data.end()};
}

TEST(Broadcast, ApplicationId0102WithLastByte07HasTheKey258Colon7) {
  std::vector<std::uint8_t> data(26);
  data[0] = 0x09;
  data[1] = 0xC9;
  data[2] = 0x01;
  data[3] = 0x02;
  data[25] = 0x07;
  const Broadcast decoded = decodeBroadcast(data);
  EXPECT_EQ(decoded.applicationId, 258);
  EXPECT_EQ(decoded.transmitter, 7);
  EXPECT_EQ(transmitterKey(decoded.applicationId, decoded.transmitter), "258:7");
}

TEST(Broadcast, TransmitterKeysAreDecimalWithoutPadding) {
  EXPECT_EQ(transmitterKey(0, 0), "0:0");
  EXPECT_EQ(transmitterKey(65535, 255), "65535:255");
}

TEST(Broadcast, CueOfNoMinutesAndNoSecondsIsFrameOneAtZero) {
  const Broadcast broadcast;
  EXPECT_EQ(cueToken(broadcast), 1);
  EXPECT_EQ(cueMilliseconds(broadcast), 0);
}

TEST(Broadcast, CueOfOneMinuteTwoSecondsThreeHundredths) {
  const Broadcast broadcast{.minutes = 1, .seconds = 2, .hundredths = 3};
  EXPECT_EQ(cueMilliseconds(broadcast), 62030);
  EXPECT_EQ(cueToken(broadcast), 513);
}

TEST(Broadcast, HundredthsDoNotCountInTheCueToken) {
  EXPECT_EQ(cueToken(Broadcast{.hundredths = 99}), 1);
}

TEST(Broadcast, LargestCue) {
  const Broadcast broadcast{.minutes = 255, .seconds = 255, .hundredths = 255};
  EXPECT_EQ(cueMilliseconds(broadcast), 15'557'550);
  EXPECT_EQ(cueToken(broadcast), 65535);
}

TEST(Broadcast, HexTextIsUpperCase) {
  EXPECT_EQ(NSDataToHex(std::vector<std::uint8_t>{0xA0}), "A0");
  EXPECT_EQ(NSDataToHex(std::vector<std::uint8_t>{0x9F}), "9F");
}

TEST(Broadcast, HexTextHasTwoDigitsAByteAndNothingElse) {
  EXPECT_EQ(NSDataToHex({}), "");
  EXPECT_EQ(NSDataToHex(std::vector<std::uint8_t>{0x00, 0x09, 0xC9, 0xFF, 0x5B}), "0009C9FF5B");
}

TEST(Broadcast, EveryFieldLiesAtItsBytes) {
  // Byte n holds 0x10 + n, so that each field tells where it was read.
  std::vector<std::uint8_t> data(26);
  std::iota(data.begin(), data.end(), std::uint8_t{0x10});
  data[0] = 0x09;
  data[1] = 0xC9;
  const Broadcast expected{.applicationId = 0x1213,
                           .syncFlag = 0x14,
                           .venueId = 0x15,
                           .pixelMapId = 0x16,
                           .master = 0x17,
                           .red = 0x18,
                           .green = 0x19,
                           .blue = 0x1A,
                           .mode = 0x1B,
                           .speed = 0x1C,
                           .ledMode = 0x1D,
                           .ledSpeed = 0x1E,
                           .videoId = 0x1F,
                           .minutes = 0x20,
                           .seconds = 0x21,
                           .hundredths = 0x22,
                           .videoStatus = 0x23,
                           .gobo = 0x24,
                           .vibrate = 0x25,
                           .paletteId = 0x26,
                           .sequence = 0x2728,
                           .transmitter = 0x29};
  EXPECT_EQ(decodeBroadcast(data), expected);
  EXPECT_EQ(bytesOf(expected), data);
}

TEST(Broadcast, BytesAreReadWithoutASign) {
  std::vector<std::uint8_t> data(26, 0xFF);
  const Broadcast decoded = decodeBroadcast(data);
  EXPECT_EQ(decoded.applicationId, 65535);
  EXPECT_EQ(decoded.sequence, 65535);
  EXPECT_EQ(decoded.speed, 255);
}

TEST(Broadcast, TransmitterIsTheLastByteWhereverThatFalls) {
  std::vector<std::uint8_t> data = bytesOf({.sequence = 0x0102, .transmitter = 255});
  data.push_back(0x20);
  data.push_back(0x07);
  const Broadcast decoded = decodeBroadcast(data);
  EXPECT_EQ(decoded.transmitter, 7);
  EXPECT_EQ(decoded.sequence, 0x0102);
}

TEST(Broadcast, AFieldIsAsLargeAsItsBytes) {
  EXPECT_LE(sizeof(Broadcast), kShortestBroadcast);
  for (const BroadcastField& field : kBroadcastFields) {
    Broadcast broadcast;
    field.value.set(broadcast, 0x0103);
    const int expected = field.value.bytes() == 1 ? 3 : 0x0103;
    EXPECT_EQ(field.value.of(broadcast), expected) << field.name;
    const Broadcast back = decodeBroadcast(encodeBroadcast(broadcast));
    EXPECT_EQ(field.value.of(back), expected) << field.name;
  }
}

TEST(Broadcast, FieldTableNamesEachByteBehindThePrefixOnce) {
  std::set<int> covered;
  std::set<std::string> names;
  for (const BroadcastField& field : kBroadcastFields) {
    for (int byte = 0; byte < field.value.bytes(); ++byte) {
      EXPECT_TRUE(covered.insert(field.offset + byte).second) << field.name;
    }
    EXPECT_TRUE(names.insert(field.name).second) << field.name;
    EXPECT_EQ(field.value.largest(), field.value.bytes() == 2 ? 65535 : 255) << field.name;
  }
  EXPECT_EQ(covered.size(), 24U);
  EXPECT_EQ(*covered.begin(), 2);
  EXPECT_EQ(*covered.rbegin(), 25);
}

TEST(Broadcast, DataWithAnotherPrefixIsAnotherMakers) {
  EXPECT_EQ(formatOf({}), BroadcastFormat::otherMaker);
  EXPECT_EQ(formatOf(std::vector<std::uint8_t>{0x09}), BroadcastFormat::otherMaker);
  std::vector<std::uint8_t> data = bytesOf({});
  data[0] = 0xC9;
  data[1] = 0x09;
  EXPECT_EQ(formatOf(data), BroadcastFormat::otherMaker);
  data[0] = 0x09;
  EXPECT_EQ(formatOf(data), BroadcastFormat::otherMaker);
}

TEST(Broadcast, DataUnder26BytesIsTooShort) {
  std::vector<std::uint8_t> data = bytesOf({});
  EXPECT_EQ(formatOf(data), BroadcastFormat::valid);
  data.pop_back();
  EXPECT_EQ(formatOf(data), BroadcastFormat::tooShort);
  data.resize(2);
  EXPECT_EQ(formatOf(data), BroadcastFormat::tooShort);
  data = bytesOf({});
  data.resize(300);
  EXPECT_EQ(formatOf(data), BroadcastFormat::valid);
}

TEST(Broadcast, SequenceAndTransmitterAreNoPartOfTheKey) {
  const auto keyOf = [](const Broadcast& broadcast) {
    const std::vector<std::uint8_t> data = bytesOf(broadcast);
    return NSDataToHex(std::span(data).first(kBroadcastKeySize));
  };
  const Broadcast plain{.applicationId = 0x0102, .mode = 3, .paletteId = 0x2A};
  EXPECT_EQ(keyOf(plain).size(), 46U);
  EXPECT_EQ(keyOf(plain),
            "09C90102000000000000000300000000000000000000"
            "2A");
  Broadcast other = plain;
  other.sequence = 65535;
  other.transmitter = 255;
  EXPECT_EQ(keyOf(other), keyOf(plain));
}

TEST(Broadcast, EveryOtherFieldIsPartOfTheKey) {
  const auto keyOf = [](const Broadcast& broadcast) {
    const BroadcastBytes data = encodeBroadcast(broadcast);
    return NSDataToHex(std::span(data).first(kBroadcastKeySize));
  };
  for (const BroadcastField& field : kBroadcastFields) {
    if (field.value == &B::sequence || field.value == &B::transmitter) continue;
    Broadcast other;
    field.value.set(other, 1);
    EXPECT_NE(keyOf(other), keyOf({})) << field.name;
  }
}

}  // namespace
}  // namespace halvora
