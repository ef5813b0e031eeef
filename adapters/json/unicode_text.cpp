// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/unicode_text.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace halvora {

namespace {

struct Encoding {
  std::string_view mark;
  /// Which of the first four bytes are zero in a document that begins with two ASCII characters, as
  /// every one does.
  std::string_view zeros;
  std::size_t unit;
  bool isLittleEndian;
};

using namespace std::string_view_literals;

// The longer marks first: UTF-32's begins with UTF-16's.
constexpr std::array<Encoding, 5> kEncodings = {{
    {"\xFF\xFE\0\0"sv, "x000"sv, 4, true},
    {"\0\0\xFE\xFF"sv, "000x"sv, 4, false},
    {"\xFF\xFE"sv, "x0x0"sv, 2, true},
    {"\xFE\xFF"sv, "0x0x"sv, 2, false},
    {"\xEF\xBB\xBF"sv, "xxxx"sv, 1, false},
}};

bool hasZerosAt(std::string_view document, std::string_view zeros) {
  if (document.size() < zeros.size()) return false;
  for (std::size_t at = 0; at < zeros.size(); ++at) {
    if ((document[at] == '\0') != (zeros[at] == '0')) return false;
  }
  return true;
}

std::uint32_t unitAt(std::string_view text, const Encoding& encoding, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t byte = 0; byte < encoding.unit; ++byte) {
    const std::size_t from = encoding.isLittleEndian ? encoding.unit - 1 - byte : byte;
    value = value << 8 | static_cast<std::uint8_t>(text[at + from]);
  }
  return value;
}

bool convert(std::string_view text, const Encoding& encoding, std::string& utf8) {
  if (text.size() % encoding.unit != 0) return false;
  for (std::size_t at = 0; at < text.size(); at += encoding.unit) {
    std::uint32_t character = unitAt(text, encoding, at);
    if (encoding.unit == 2 && isHighSurrogate(character)) {
      at += encoding.unit;
      const std::uint32_t low = at < text.size() ? unitAt(text, encoding, at) : 0;
      if (!isLowSurrogate(low)) return false;
      character = characterOfPair(character, low);
    }
    if (isHighSurrogate(character) || isLowSurrogate(character)) return false;
    if (character > 0x10FFFF) return false;
    appendUtf8(utf8, character);
  }
  return true;
}

}  // namespace

void appendUtf8(std::string& text, std::uint32_t character) {
  const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

std::optional<std::string_view> utf8Of(std::string_view document, std::string& storage) {
  for (const Encoding& encoding : kEncodings) {
    const bool isMarked = document.starts_with(encoding.mark);
    if (!isMarked && !hasZerosAt(document, encoding.zeros)) continue;
    if (isMarked) document.remove_prefix(encoding.mark.size());
    if (encoding.unit == 1) return document;
    storage.reserve(document.size());
    if (!convert(document, encoding, storage)) return std::nullopt;
    return storage;
  }
  return document;
}

std::size_t utf8Length(std::string_view text) {
  // The first byte settles how many follow, and some of them narrow what the second may be.
  const auto byteAt = [text](std::size_t at) {
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : std::uint8_t{0};
  };
  const std::uint8_t first = byteAt(0);
  if (first < 0xC2 || first > 0xF4) return 0;
  const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  const std::uint8_t least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (byteAt(1) < least || byteAt(1) > most) return 0;
  for (std::size_t at = 2; at < length; ++at) {
    if ((byteAt(at) & 0xC0) != 0x80) return 0;
  }
  return length;
}

std::string_view validUtf8(std::string_view text, std::string& storage) {
  constexpr std::uint32_t kReplacement = 0xFFFD;
  bool isValid = true;
  storage.clear();
  for (std::size_t at = 0; at < text.size();) {
    const bool isAscii = static_cast<std::uint8_t>(text[at]) < 0x80;
    const std::size_t length = isAscii ? 1 : utf8Length(text.substr(at));
    if (length == 0) {
      if (isValid) storage.assign(text.substr(0, at));
      isValid = false;
      appendUtf8(storage, kReplacement);
      ++at;
      continue;
    }
    if (!isValid) storage.append(text.substr(at, length));
    at += length;
  }
  return isValid ? text : storage;
}

}  // namespace halvora
