// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/real_number.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/other_country.h"

namespace halvora {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
constexpr double kSmallestNormal = std::numeric_limits<double>::min();

// Tells -0 from 0, which are equal.
std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }

void expectReadAs(const std::string& written, double value) {
  EXPECT_EQ(bitsOf(realNumber(written)), bitsOf(value)) << written.substr(0, 100);
  EXPECT_EQ(bitsOf(realNumber("-" + written)), bitsOf(-value)) << written.substr(0, 100);
}

template <class Real>
std::string printed(const char* format, int decimals, Real value) {
  char text[2048];
  const int size = std::snprintf(text, sizeof text, format, decimals, value);
  return std::string(text, static_cast<std::size_t>(size));
}

double anyFinite(std::mt19937_64& random) {
  double value = kInfinity;
  while (!std::isfinite(value)) value = std::bit_cast<double>(random());
  return std::fabs(value);
}

/// Digits, perhaps a fraction and an exponent, of any length and around every limit.
std::string anyNumber(std::mt19937_64& random) {
  const auto below = [&](std::uint64_t bound) { return random() % bound; };
  const auto length = [&] {
    constexpr std::uint64_t kLongest[] = {3, 17, 25, 400, 900};
    return below(kLongest[below(std::size(kLongest))]);
  };
  const auto digits = [&](std::uint64_t count) {
    std::string text;
    while (text.size() < count) text += static_cast<char>('0' + below(10));
    return text;
  };
  std::string text =
      below(3) == 0 ? "0" : std::string(1, static_cast<char>('1' + below(9))) + digits(length());
  const bool hasFraction = below(2) == 0;
  if (hasFraction) text += "." + std::string(below(2) * length(), '0') + digits(1 + length());
  if (!hasFraction || below(2) == 0) {
    constexpr const char* kExponents[] = {"e", "E", "e+", "E-", "e-"};
    text += kExponents[below(std::size(kExponents))];
    text += below(20) == 0 ? digits(11) : std::to_string(below(below(2) == 0 ? 40 : 700));
  }
  return text;
}

TEST(RealNumber, BelowTheSmallestIsZero) {
  expectReadAs("0." + std::string(60, '0') + "5e-300", 0.0);
  expectReadAs("0." + std::string(1'000'000, '0') + "1", 0.0);
  for (const int exponent : {-325, -340, -348, -349, -356, -400, -1000, -2147483647}) {
    expectReadAs("1e" + std::to_string(exponent), 0.0);
    expectReadAs("1.0000000000000000000000001E" + std::to_string(exponent), 0.0);
  }
  expectReadAs("1e-99999999999", 0.0);
  expectReadAs("9." + std::string(5000, '9') + "e-99999999999999999999999999", 0.0);
  expectReadAs("2.4703282292062327e-324", 0.0);
  expectReadAs("2.4703282292062328e-324", kSmallest);
}

TEST(RealNumber, BeyondTheLargestIsInfinite) {
  expectReadAs("1.7976931348623157e308", kLargest);
  expectReadAs("1.7976931348623158e308", kLargest);
  expectReadAs("1.7976931348623159e308", kInfinity);
  for (const char* written : {"2e308", "0.77E309", "1e309", "1e99999999999", "61861E306"}) {
    expectReadAs(written, kInfinity);
  }
  expectReadAs(std::string(310, '9'), kInfinity);
  expectReadAs("0." + std::string(40, '0') + "1e400", kInfinity);
}

TEST(RealNumber, DenormalsAreExact) {
  expectReadAs("5e-324", kSmallest);
  expectReadAs("4.9406564584124654e-324", kSmallest);
  expectReadAs("2.2250738585072014e-308", kSmallestNormal);
  expectReadAs("2.2250738585072011e-308", std::nextafter(kSmallestNormal, 0.0));
}

TEST(RealNumber, DigitsAndExponentMayMakeUpForEachOther) {
  expectReadAs("1" + std::string(5000, '0') + "e-5000", 1.0);
  expectReadAs("0." + std::string(4999, '0') + "1e5000", 1.0);
  expectReadAs("125" + std::string(400, '0') + "e-402", 1.25);
}

TEST(RealNumber, ZerosOfEveryKindKeepTheirSign) {
  for (const char* written : {"0.0", "0e0", "0E5", "0e-99999999999", "0.0e400",
                              "0.000000000000000000000000000000000000"}) {
    expectReadAs(written, 0.0);
  }
  expectReadAs("0." + std::string(3000, '0') + "e99999999999", 0.0);
}

TEST(RealNumber, WholeNumbersBeyond64Bits) {
  expectReadAs("18446744073709551616", 18446744073709551616.0);
  expectReadAs("9223372036854775808", 9223372036854775808.0);
}

TEST(RealNumber, IsTheSameInEveryCountry) {
  const OtherCountry abroad;
  expectReadAs("1234.5", 1234.5);
  expectReadAs("1234.56789012345678901", 1234.56789012345678901);
  expectReadAs("12.5e-3", 0.0125);
  if (!abroad.isWhole()) GTEST_SKIP() << "no locale with a decimal comma can be had here";
}

TEST(RealNumber, SeventeenDigitsOfAnyDoubleAreThatDouble) {
  std::mt19937_64 random(20261122);
  for (int count = 0; count < 5000; ++count) {
    const double value = anyFinite(random);
    expectReadAs(printed("%.*e", 16, value), value);
    expectReadAs(printed("%.*e", 16 + static_cast<int>(random() % 800), value), value);
  }
}

// Halfway between two neighbours stands a number of up to 768 digits. It goes to the even one, and
// whatever is added to it to the upper one.
TEST(RealNumber, HalfwayBetweenNeighboursIsTheEvenOne) {
  if (std::numeric_limits<long double>::digits <= std::numeric_limits<double>::digits) {
    GTEST_SKIP() << "no type here holds what lies halfway";
  }
  std::mt19937_64 random(20261122);
  for (int count = 0; count < 2000; ++count) {
    const double lower = anyFinite(random);
    if (lower == kLargest) continue;
    const double upper = std::nextafter(lower, kInfinity);
    const double even = bitsOf(lower) % 2 == 0 ? lower : upper;
    const std::string half = printed("%.*Le", 780, (static_cast<long double>(lower) + upper) / 2);
    expectReadAs(half, even);
    expectReadAs(std::string(half).insert(half.find('e'), std::string(300, '0') + "1"), upper);
  }
}

TEST(RealNumber, IsWhatTheSystemReads) {
  std::mt19937_64 random(20261122);
  for (int count = 0; count < 20'000; ++count) {
    const std::string written = anyNumber(random);
    expectReadAs(written, std::strtod(written.c_str(), nullptr));
  }
}

}  // namespace
}  // namespace halvora
