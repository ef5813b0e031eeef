// SPDX-License-Identifier: Apache-2.0
#include "adapters/ffmpeg/mp4_bytes.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/adapters/ffmpeg/mp4_maker.h"

namespace halvora {
namespace {

using namespace mp4_maker;

TEST(FfmpegBytes, ANumberIsReadWhereverTheWindowEnds) {
  std::string bytes;
  for (int at = 0; at < 9000; ++at) bytes += static_cast<char>(at * 7 % 251);
  const Memory source(bytes);
  for (const std::uint64_t first : {0U, 100U, 4000U}) {
    for (int count = 1; count <= 8; ++count) {
      for (std::uint64_t at = 4080; at < 4110; ++at) {
        Mp4Bytes reader(source);
        reader.number(first, 1);
        std::uint64_t expected = 0;
        for (int byte = 0; byte < count; ++byte) {
          const auto place = at + static_cast<std::uint64_t>(byte);
          expected = expected << 8 | static_cast<unsigned char>(bytes[place]);
        }
        ASSERT_EQ(reader.number(at, count), expected) << first << ", " << at << ", " << count;
        ASSERT_FALSE(reader.isCut());
      }
    }
  }
}

TEST(FfmpegBytes, WhatIsInTheWindowIsNotReadAgain) {
  const Memory source(std::string(9000, 'x'));
  Mp4Bytes reader(source);
  reader.number(1000, 4);
  reader.number(1000 + 4096 - 8, 8);
  reader.number(1000, 8);
  EXPECT_EQ(source.reads, 1);
  reader.number(1000 + 4096 - 7, 8);
  EXPECT_EQ(source.reads, 2);
  reader.number(1000, 1);
  EXPECT_EQ(source.reads, 3) << "what is before it is read anew";
}

TEST(FfmpegBytes, BeyondTheEndIsNothingAndSaidSo) {
  const Memory source("abcdefgh");
  Mp4Bytes reader(source);
  EXPECT_EQ(reader.fileSize(), 8U);
  EXPECT_EQ(reader.number(4, 4), 0x65666768U);
  EXPECT_EQ(reader.number(0, 8), 0x6162636465666768U);
  EXPECT_FALSE(reader.isCut());
  EXPECT_EQ(reader.number(5, 4), 0U);
  EXPECT_TRUE(reader.isCut());
  EXPECT_EQ(reader.number(0, 1), 0x61U) << "what is there is there";
  EXPECT_TRUE(reader.isCut());
}

// A box behind four other bytes.
Mp4Box boxOf(const std::string& bytes, std::uint64_t limit) {
  const Memory source("1234" + bytes);
  return Mp4Bytes(source).boxAt(4, limit);
}

TEST(FfmpegBytes, ABoxSaysWhereItEnds) {
  const Mp4Box box = boxOf(number(20, 4) + "abcd" + std::string(30, 'x'), 42);
  EXPECT_EQ(box.type, fourLetters("abcd"));
  EXPECT_EQ(box.begin, 4U);
  EXPECT_EQ(box.body, 12U);
  EXPECT_EQ(box.end, 24U);
  EXPECT_EQ(box.bodySize(), 12U);
  EXPECT_EQ(boxOf(number(8, 4) + "abcd", 12).end, 12U) << "an empty one";
  EXPECT_EQ(boxOf(number(7, 4) + "abcd", 12).end, 4U) << "none";
  EXPECT_EQ(boxOf(number(2, 4) + "abcd" + number(50, 8), 20).end, 4U);
  EXPECT_EQ(boxOf(number(0, 4) + "abcd" + std::string(30, 'x'), 42).end, 42U) << "the rest";
}

TEST(FfmpegBytes, ABoxMayHaveALongHeader) {
  const std::string bytes = number(1, 4) + "abcd" + number(20, 8) + std::string(30, 'x');
  const Mp4Box box = boxOf(bytes, 50);
  EXPECT_EQ(box.type, fourLetters("abcd"));
  EXPECT_EQ(box.body, 20U);
  EXPECT_EQ(box.end, 24U);
  EXPECT_EQ(boxOf(bytes, 20).end, 24U) << "with just enough room for the header";
  EXPECT_EQ(boxOf(bytes, 19).end, 4U) << "a byte less, and one is its size";
  EXPECT_EQ(boxOf(number(1, 4) + "abcd" + number(16, 8), 20).end, 20U);
  EXPECT_EQ(boxOf(number(1, 4) + "abcd" + number(15, 8), 20).end, 4U);
}

TEST(FfmpegBytes, ABoxDoesNotEndBeforeItBegins) {
  EXPECT_EQ(boxOf(number(1, 4) + "abcd" + number(UINT64_MAX, 8), 20).end, UINT64_MAX);
  EXPECT_EQ(boxOf(number(1, 4) + "abcd" + number(UINT64_MAX - 4, 8), 20).end, UINT64_MAX);
  EXPECT_EQ(boxOf(number(1, 4) + "abcd" + number(UINT64_MAX - 5, 8), 20).end, UINT64_MAX - 1);
}

}  // namespace
}  // namespace halvora
