// SPDX-License-Identifier: Apache-2.0
#include "adapters/nettle/nettle_codes.h"

#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "tests/engine/allocation_count.h"
#include "venue/show/scenario.h"

/// What was wiped last: how many bytes, and whether they held anything.
static std::size_t wipedBytes = 0;
static bool wasSecret = false;

// In the place of the C library's, for the whole program.
extern "C" void explicit_bzero(void* memory, std::size_t size) noexcept {
  auto* const bytes = static_cast<volatile unsigned char*>(memory);
  wipedBytes = size;
  wasSecret = false;
  for (std::size_t at = 0; at < size; ++at) {
    wasSecret = wasSecret || bytes[at] != 0;
    bytes[at] = 0;
  }
}

namespace halvora {
namespace {

std::vector<std::uint8_t> bytesOf(std::string_view hex) { return bytesOfHex(hex).value(); }

ShowKey keyOf(std::string_view hex) {
  const auto bytes = bytesOf(hex);
  return ShowKey(std::span<const std::uint8_t, ShowKey::kSize>(bytes));
}

constexpr std::string_view kStandardKey = "2B7E151628AED2A6ABF7158809CF4F3C";

struct Vector {
  std::string_view message;
  std::string_view code;
};

// RFC 4493, section 4, which are those of NIST SP 800-38B for AES-128.
constexpr Vector kVectors[] = {
    {"", "BB1D6929E95937287FA37D129B756746"},
    {"6BC1BEE22E409F96E93D7E117393172A", "070A16B46B4D4144F79BDD9DD04A287C"},
    {"6BC1BEE22E409F96E93D7E117393172AAE2D8A571E03AC9C9EB76FAC45AF8E5130C81C46A35CE411",
     "DFA66747DE9AE63030CA32611497C827"},
    {"6BC1BEE22E409F96E93D7E117393172AAE2D8A571E03AC9C9EB76FAC45AF8E51"
     "30C81C46A35CE411E5FBC1191A0A52EFF69F2445DF4F9B17AD2B417BE66C3710",
     "51F0BEBF7E3B9D92FC49741779363CFE"},
};

TEST(NettleCodes, AreThoseOfTheStandardMessageAfterMessage) {
  const auto code = NettleCodes().withKey(keyOf(kStandardKey));
  ASSERT_NE(code, nullptr);
  for (const Vector& vector : kVectors) {
    EXPECT_EQ(NSDataToHex(code->of(bytesOf(vector.message))), vector.code) << vector.message;
  }
}

TEST(NettleCodes, LeaveNothingOfAKeyInMemory) {
  auto code = NettleCodes().withKey(keyOf(kStandardKey));
  wipedBytes = 0;
  code.reset();
  // Eleven round keys of 16 bytes, and what the two subkeys, the block and the count take.
  EXPECT_GE(wipedBytes, 176U);
  EXPECT_TRUE(wasSecret);
}

TEST(NettleCodes, TakeNothingFromTheHeap) {
  if (!countsAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";
  const auto code = NettleCodes().withKey(keyOf(kStandardKey));
  const auto message = bytesOf(kVectors[2].message);
  const AllocationCount count;
  for (int again = 0; again < 100; ++again) static_cast<void>(code->of(message));
  EXPECT_EQ(count.allocations(), 0U);
}

TEST(ShowKey, IsWipedWhenItGoes) {
  alignas(ShowKey) unsigned char room[sizeof(ShowKey)];
  auto* const key = new (room) ShowKey(keyOf(kStandardKey));
  ASSERT_EQ(room[0], 0x2B);
  key->~ShowKey();
  for (const unsigned char byte : room) EXPECT_EQ(byte, 0);
}

}  // namespace
}  // namespace halvora
