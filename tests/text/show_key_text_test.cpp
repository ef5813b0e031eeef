// SPDX-License-Identifier: Apache-2.0
// Keys as their files have them.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "halvora/platform/message_codes.h"

namespace halvora {
namespace {

TEST(ShowKeyText, IsThirtyTwoDigitsOfEitherCaseWithBlanksAround) {
  const auto key = ShowKey::ofText(" \r\n\t00112233445566778899aAbBcCdDeEfF\n");
  ASSERT_TRUE(key);
  std::vector<std::uint8_t> wanted;
  for (int at = 0; at < 16; ++at) wanted.push_back(static_cast<std::uint8_t>(at * 0x11));
  EXPECT_TRUE(std::ranges::equal(key->bytes(), wanted));
}

TEST(ShowKeyText, IsNoOtherText) {
  const std::string digits = "00112233445566778899aabbccddeeff";
  for (const std::string& text :
       {std::string(), std::string(" \n"), digits.substr(1), digits + "0", digits + " 00",
        "0x" + digits.substr(2), digits.substr(0, 31) + "g", digits.substr(0, 31) + '\0',
        digits.substr(0, 16) + " " + digits.substr(16)}) {
    EXPECT_FALSE(ShowKey::ofText(text)) << text;
  }
}

}  // namespace
}  // namespace halvora
