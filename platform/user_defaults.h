// SPDX-License-Identifier: Apache-2.0
// The small persistent values of an application. Reads see the last write at once; writing a value
// that is already there costs nothing, and no write makes the caller wait for a disk. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/text.h"
#include "platform/time.h"

namespace halvora {

struct DefaultsMember;
struct DefaultsValue;
using DefaultsArray = std::vector<DefaultsValue>;
using DefaultsDictionary = std::vector<DefaultsMember>;

struct DefaultsValue {
  using Storage = std::variant<bool, std::int64_t, double, std::string, Date, DefaultsArray,
                               DefaultsDictionary>;
  Storage storage;

  DefaultsValue() = default;
  template <class T>
  requires std::is_constructible_v<Storage, T&&> DefaultsValue(T&& value)
      : storage(std::forward<T>(value)) {}  // NOLINT(google-explicit-constructor)

  friend bool operator==(const DefaultsValue&, const DefaultsValue&);
};

struct DefaultsMember {
  std::string key;
  DefaultsValue value;
  friend bool operator==(const DefaultsMember&, const DefaultsMember&) = default;
};

inline bool operator==(const DefaultsValue& left, const DefaultsValue& right) {
  return left.storage == right.storage;
}

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;
  /// Null for a key that is not set. The value lives until the next write.
  virtual const DefaultsValue* find(std::string_view key) const = 0;
  virtual void set(std::string_view key, DefaultsValue value) = 0;
  virtual void remove(std::string_view key) = 0;
  /// Asks for what was written to be made lasting, soon and off the main thread.
  virtual void synchronize() = 0;
};

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
