// SPDX-License-Identifier: Apache-2.0
// Brings a JSON document of any Unicode encoding to UTF-8, and tells good UTF-8 from bad.
// Stateless; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace halvora {

/// The document without its byte order mark. UTF-8 is answered as it is (and not checked); UTF-16
/// and UTF-32, with a mark or told by the zeros among the first bytes, are converted into
/// `storage`, which must outlive the answer. None for text that ends within a character or holds
/// half a surrogate pair.
std::optional<std::string_view> utf8Of(std::string_view document, std::string& storage);

constexpr bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Two units of UTF-16 as the one character that they spell.
constexpr std::uint32_t characterOfPair(std::uint32_t high, std::uint32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

void appendUtf8(std::string& text, std::uint32_t character);

/// How many bytes the character beyond ASCII at the beginning of `text` has; 0 where it is none:
/// cut short, longer than need be, half a surrogate pair or beyond Unicode.
std::size_t utf8Length(std::string_view text);

/// The text with a replacement character for each byte that belongs to no character of UTF-8: the
/// names of files may hold any bytes, JSON may not. `storage` must outlive the answer.
std::string_view validUtf8(std::string_view text, std::string& storage);

}  // namespace halvora
