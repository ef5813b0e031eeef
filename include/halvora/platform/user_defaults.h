// SPDX-License-Identifier: Apache-2.0
// The small persistent values of an application. Reads see the last write at once; writing a value
// that is already there costs nothing, and no write makes the caller wait for a disk. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "halvora/platform/need.h"
#include "halvora/platform/time.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

struct DefaultsMember;
struct DefaultsValue;
/// Values in an order.
using DefaultsArray = std::vector<DefaultsValue>;
/// Values by key, in the order in which they came.
using DefaultsDictionary = std::vector<DefaultsMember>;

/// One value of any of the kinds that last.
struct DefaultsValue {
  /// The kinds; lists and dictionaries hold values of any of them.
  using Storage = std::variant<bool, std::int64_t, double, std::string, Date, DefaultsArray,
                               DefaultsDictionary>;
  Storage storage;  ///< False as it stands.

  DefaultsValue() = default;
  /// Of what any of the kinds can be made from.
  template <class T>
  requires std::is_constructible_v<Storage, T&&> DefaultsValue(T&& value)
      : storage(std::forward<T>(value)) {}               // NOLINT(google-explicit-constructor)
  DefaultsValue(const DefaultsValue& other);             ///< Throws only std::bad_alloc.
  DefaultsValue(DefaultsValue&&) noexcept = default;     ///< What is moved from may hold anything.
  DefaultsValue& operator=(const DefaultsValue& other);  ///< Throws only std::bad_alloc.
  DefaultsValue& operator=(DefaultsValue&&) noexcept = default;  ///< As the constructor.
  ~DefaultsValue() = default;

  friend bool operator==(const DefaultsValue&, const DefaultsValue&);

 private:
  static Storage copyOf(const Storage& other);
};

/// A key and its value.
struct DefaultsMember {
  std::string key;      ///< UTF-8.
  DefaultsValue value;  ///< What it has.
  friend bool operator==(const DefaultsMember&, const DefaultsMember&) = default;
};

// Each kind in its place, and not by the variant's own copy: where there is no memory for that,
// GCC's library (12) takes apart a value that was never made, and the process ends.
inline DefaultsValue::Storage DefaultsValue::copyOf(const Storage& other) {
  return std::visit(
      [](const auto& value) {
        return Storage(std::in_place_type<std::remove_cvref_t<decltype(value)>>, value);
      },
      other);
}

inline DefaultsValue::DefaultsValue(const DefaultsValue& other) : storage(copyOf(other.storage)) {}

inline DefaultsValue& DefaultsValue::operator=(const DefaultsValue& other) {
  storage = copyOf(other.storage);
  return *this;
}

/// Of one kind, and equal in it.
inline bool operator==(const DefaultsValue& left, const DefaultsValue& right) {
  return left.storage == right.storage;
}

/// The values of one application, by key.
class UserDefaults : public Need {
 public:
  /// Null for a key that is not set. The value lives until the next write.
  virtual const DefaultsValue* find(std::string_view key) const = 0;
  /// In place of what the key had.
  virtual void set(std::string_view key, DefaultsValue value) = 0;
  /// A key that is not set stays so.
  virtual void remove(std::string_view key) = 0;
  /// Asks for what was written to be made lasting, soon and off the main thread.
  virtual void synchronize() = 0;
};

}  // namespace v0
}  // namespace halvora
