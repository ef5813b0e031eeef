// SPDX-License-Identifier: Apache-2.0
#include "venue/show/cue_values.h"

#include <algorithm>
#include <cmath>

#include "text/numbers.h"
#include "venue/base/input_text.h"

namespace halvora {

namespace {

constexpr std::uint64_t kMostMinutes = 5760;

Duration toMilliseconds(double seconds) { return milliseconds(std::llround(seconds * 1000)); }

// The thousandths of one to three digits.
std::optional<std::uint64_t> thousandths(std::string_view digits) {
  if (digits.empty() || digits.size() > 3) return std::nullopt;
  std::optional<std::uint64_t> value = decimal(digits, 999);
  for (std::size_t at = digits.size(); value && at < 3; ++at) *value *= 10;
  return value;
}

char plain(char letter) {
  if (letter == '-' || letter == '_') return ' ';
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

std::optional<Duration> showTimeOf(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) {
    const auto seconds = plainNumber(std::string(text));
    if (!seconds || !(*seconds >= 0) || *seconds > toSeconds(kLongestShow)) return std::nullopt;
    return toMilliseconds(*seconds);
  }
  const auto minutes = decimal(text.substr(0, colon), kMostMinutes);
  const std::string_view rest = text.substr(colon + 1);
  const std::size_t point = std::min(rest.find('.'), rest.size());
  const auto seconds = point == 2 ? decimal(rest.substr(0, 2), 59) : std::nullopt;
  const auto fraction =
      point == rest.size() ? std::optional<std::uint64_t>(0) : thousandths(rest.substr(point + 1));
  if (!minutes || !seconds || !fraction) return std::nullopt;
  const std::uint64_t thousandth = (*minutes * 60 + *seconds) * 1000 + *fraction;
  const Duration time = milliseconds(static_cast<long long>(thousandth));
  return time <= kLongestShow ? std::optional(time) : std::nullopt;
}

std::string showTimeText(Duration time) {
  const long long all = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  const long long minutes = all / 60000;
  std::string seconds = std::to_string(all % 60000 / 1000);
  if (minutes > 0 && seconds.size() < 2) seconds.insert(0, 1, '0');
  if (all % 1000 != 0) {
    seconds += "." + std::to_string(1000 + all % 1000).substr(1);
    seconds.erase(seconds.find_last_not_of('0') + 1);
  }
  return minutes > 0 ? std::to_string(minutes) + ":" + seconds : seconds;
}

std::optional<std::uint8_t> levelByteOf(std::string_view text) {
  if (!text.ends_with('%')) {
    const auto byte = decimal(text, 0xFF);
    return byte ? std::optional(static_cast<std::uint8_t>(*byte)) : std::nullopt;
  }
  text.remove_suffix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  const auto percent = plainNumber(std::string(text));
  if (!percent || !(*percent >= 0) || *percent > 100) return std::nullopt;
  return static_cast<std::uint8_t>(std::floor(*percent * 255 / 100 + 0.5));
}

std::optional<ColourBytes> colourBytesOf(std::string_view text) {
  if (text.size() != 7 || text[0] != '#') return std::nullopt;
  std::uint8_t bytes[3] = {};
  for (std::size_t at = 0; at < 3; ++at) {
    const int high = hexDigit(text[1 + 2 * at]);
    const int low = hexDigit(text[2 + 2 * at]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes[at] = static_cast<std::uint8_t>(high * 16 + low);
  }
  return ColourBytes{bytes[0], bytes[1], bytes[2]};
}

bool isSameName(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, plain, plain);
}

std::optional<std::uint8_t> choiceOf(std::string_view text, std::span<const char* const> names) {
  if (const auto number = decimal(text, names.size() - 1)) {
    return static_cast<std::uint8_t>(*number);
  }
  for (std::size_t at = 0; at < names.size(); ++at) {
    if (isSameName(names[at], text)) return static_cast<std::uint8_t>(at);
  }
  return std::nullopt;
}

// What a stranger has written must not steer the terminal that it is shown on.
std::string inQuotes(std::string_view text) {
  constexpr std::size_t kShown = 60;
  std::string shown(text.substr(0, kShown));
  const auto isControl = [](unsigned char one) { return one < ' ' || one == 0x7F; };
  std::ranges::replace_if(shown, isControl, '?');
  return "\"" + shown + (text.size() > kShown ? "…\"" : "\"");
}

}  // namespace halvora
