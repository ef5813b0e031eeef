// SPDX-License-Identifier: Apache-2.0
// How files are named while they are being written, and in which order a folder is listed: the same
// for every adapter that serves files. Any thread.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

#include "text/numbers.h"

namespace halvora {

inline constexpr std::string_view kLeftoverMark = ".new-";
inline constexpr std::size_t kLeftoverDigits = 16;

/// What the name of a file ends with until it is whole and gets its own.
inline std::string leftoverEnding(std::uint64_t number) {
  std::array<char, kLeftoverDigits> text{};
  const char* end = std::to_chars(text.data(), text.data() + text.size(), number, 16).ptr;
  const auto size = static_cast<std::size_t>(end - text.data());
  return std::string(kLeftoverMark) + std::string(kLeftoverDigits - size, '0') +
         std::string(text.data(), size);
}

inline bool isLeftover(std::string_view name) {
  constexpr std::size_t kSize = kLeftoverMark.size() + kLeftoverDigits;
  if (name.size() < kSize) return false;
  const std::string_view ending = name.substr(name.size() - kSize);
  return ending.starts_with(kLeftoverMark) &&
         ending.find_first_not_of("0123456789abcdef", kLeftoverMark.size()) ==
             std::string_view::npos;
}

/// The order of a listing: "10" comes after "9", and "x" after both.
inline bool isListedBefore(std::string_view left, std::string_view right) {
  const auto placeOf = [](std::string_view name) {
    constexpr std::size_t kMostDigits = 18;
    const bool isNumber = !name.empty() && name.size() <= kMostDigits &&
                          name.find_first_not_of("0123456789") == std::string_view::npos;
    return std::tuple(!isNumber, isNumber ? integerValue(name) : 0, name);
  };
  return placeOf(left) < placeOf(right);
}

}  // namespace halvora
