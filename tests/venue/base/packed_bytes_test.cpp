// SPDX-License-Identifier: Apache-2.0
// Numbers and texts as few bytes, and what is no such bytes.
#include "venue/base/packed_bytes.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace halvora {
namespace {

TEST(PackedBytes, NumbersComeBackAndSmallOnesAreShort) {
  const std::pair<std::uint64_t, std::size_t> sizes[] = {
      {0, 1}, {127, 1}, {128, 2}, {16'383, 2}, {16'384, 3}, {UINT64_MAX >> 1, 9}, {UINT64_MAX, 10}};
  for (const auto& [number, size] : sizes) {
    PackedWriter writer;
    writer.number(number);
    EXPECT_EQ(writer.bytes().size(), size) << number;
    PackedReader reader(writer.bytes());
    EXPECT_EQ(reader.number(), number);
    EXPECT_TRUE(reader.isDone());
  }
  for (const std::int64_t number : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{63},
                                    std::int64_t{-64}, INT64_MAX, -INT64_MAX}) {
    PackedWriter writer;
    writer.signedNumber(number);
    PackedReader reader(writer.bytes());
    EXPECT_EQ(reader.signedNumber(), number);
    EXPECT_TRUE(reader.isDone());
  }
}

TEST(PackedBytes, BeyondTheMostIsNone) {
  PackedWriter writer;
  writer.number(10);
  writer.signedNumber(-10);
  EXPECT_EQ(PackedReader(writer.bytes()).number(10), 10U);
  PackedReader few(writer.bytes());
  EXPECT_EQ(few.number(9), 0U);
  EXPECT_FALSE(few.isGood());
  for (const std::int64_t most : {10, 9}) {
    PackedReader reader(writer.bytes());
    reader.number();
    EXPECT_EQ(reader.signedNumber(most), most == 10 ? -10 : 0);
    EXPECT_EQ(reader.isDone(), most == 10);
  }
}

// The tenth byte has room for one bit of the sixty-four.
TEST(PackedBytes, ANumberOfTooManyBitsIsNone) {
  const std::string nine(9, '\xFF');
  EXPECT_EQ(PackedReader(nine + '\x01').number(), UINT64_MAX);
  for (const std::string& bytes : {nine + '\x02', nine + "\x81\x01", nine, std::string()}) {
    PackedReader reader(bytes);
    EXPECT_EQ(reader.number(), 0U) << bytes.size();
    EXPECT_FALSE(reader.isGood()) << bytes.size();
  }
}

TEST(PackedBytes, WhatIsBadOnceGivesZerosFromThereOn) {
  PackedReader empty("");
  EXPECT_EQ(empty.byte(), 0);
  EXPECT_FALSE(empty.isGood());

  PackedWriter writer;
  writer.number(1000);
  writer.text("text");
  PackedReader reader(writer.bytes());
  EXPECT_EQ(reader.number(999), 0U);
  EXPECT_EQ(reader.text(), "");
  EXPECT_EQ(reader.byte(), 0);
  EXPECT_FALSE(reader.isDone());
}

TEST(PackedBytes, TextsAndCountsAreNoLongerThanWhatFollows) {
  PackedWriter writer;
  writer.text("abc");
  PackedReader whole(writer.bytes());
  EXPECT_EQ(whole.text(), "abc");
  EXPECT_TRUE(whole.isDone());
  PackedReader cut(std::string_view(writer.bytes()).substr(0, 3));
  EXPECT_EQ(cut.text(), "");
  EXPECT_FALSE(cut.isGood());

  const std::string three("\x03......", 7);
  EXPECT_EQ(PackedReader(three).count(2), 3U);
  EXPECT_EQ(PackedReader(three).count(3), 0U);
}

}  // namespace
}  // namespace halvora
