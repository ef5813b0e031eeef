// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/message_codes.h"

namespace halvora {

namespace {

constexpr std::string_view kBlank = " \t\r\n";

std::optional<std::uint8_t> digitOf(char character) {
  if (character >= '0' && character <= '9') return static_cast<std::uint8_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<std::uint8_t>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<std::uint8_t>(character - 'A' + 10);
  return std::nullopt;
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlank);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlank) + 1 - begin);
}

}  // namespace

// Written where it stays, so that nothing has to be wiped but keys.
std::optional<ShowKey> ShowKey::ofText(std::string_view text) {
  const std::string_view digits = withoutBlanks(text);
  if (digits.size() != 2 * kSize) return std::nullopt;
  ShowKey key;
  for (std::size_t at = 0; at < kSize; ++at) {
    const auto high = digitOf(digits[2 * at]);
    const auto low = digitOf(digits[2 * at + 1]);
    if (!high || !low) return std::nullopt;
    key.bytes_[at] = static_cast<std::uint8_t>(*high << 4 | *low);
  }
  return key;
}

}  // namespace halvora
