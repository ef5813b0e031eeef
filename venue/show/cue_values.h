// SPDX-License-Identifier: Apache-2.0
// The single values that people write in a show: times, levels, colours, names from a list. Each
// gives the value, or none, and then the caller says what would be right. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "halvora/platform/time.h"

namespace halvora {

/// Four days: longer than any show.
inline constexpr Duration kLongestShow = milliseconds(345'600'000);

/// Seconds, "m:ss" or "m:ss.mmm", to the nearest millisecond, up to `kLongestShow`.
std::optional<Duration> showTimeOf(std::string_view text);
/// As people write it: "1:02.500", or "2.5" below a minute.
std::string showTimeText(Duration time);

/// 0 to 255, or "n %" of 255 with n up to 100.
std::optional<std::uint8_t> levelByteOf(std::string_view text);

struct ColourBytes {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
};
/// "#rrggbb", either case.
std::optional<ColourBytes> colourBytesOf(std::string_view text);

/// Whether two names are the same to a person: case, "-" and "_" make no difference.
bool isSameName(std::string_view one, std::string_view other);
/// A number up to the last name's, or a name; the place in the list.
std::optional<std::uint8_t> choiceOf(std::string_view text, std::span<const char* const> names);

/// What somebody wrote, as a complaint shows it: its beginning, where it is long.
std::string inQuotes(std::string_view text);

}  // namespace halvora
