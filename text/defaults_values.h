// SPDX-License-Identifier: Apache-2.0
// What the kit reads out of the defaults, whatever kind of value somebody has put there. Main
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/platform/user_defaults.h"
#include "text/numbers.h"

namespace halvora {

/// The text under a key; a number or a flag counts as its plain decimal (7.0 is "7"), anything
/// else as none.
inline std::optional<std::string> textForKey(const UserDefaults& defaults, std::string_view key) {
  const DefaultsValue* value = defaults.find(key);
  if (value == nullptr) return std::nullopt;
  if (const auto* text = std::get_if<std::string>(&value->storage)) return *text;
  if (const auto* number = std::get_if<std::int64_t>(&value->storage)) {
    return std::to_string(*number);
  }
  if (const auto* flag = std::get_if<bool>(&value->storage)) return std::string(*flag ? "1" : "0");
  if (const auto* real = std::get_if<double>(&value->storage)) return plainDecimal(*real);
  return std::nullopt;
}

/// The integer under a key: a number truncated, a text by the integer it begins with, otherwise 0.
inline std::int64_t integerForKey(const UserDefaults& defaults, std::string_view key) {
  const DefaultsValue* value = defaults.find(key);
  if (value == nullptr) return 0;
  if (const auto* number = std::get_if<std::int64_t>(&value->storage)) return *number;
  if (const auto* text = std::get_if<std::string>(&value->storage)) return integerValue(*text);
  if (const auto* flag = std::get_if<bool>(&value->storage)) return *flag ? 1 : 0;
  if (const auto* real = std::get_if<double>(&value->storage)) return wholeNumber(*real);
  return 0;
}

}  // namespace halvora
