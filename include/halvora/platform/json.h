// SPDX-License-Identifier: Apache-2.0
// JSON as a need: text in, a value out, or event by event for documents too large to be kept as
// values. Both keep what the text says; conversions follow the rules that the kit's documents rely
// on (true counts as 1, fractions truncate, texts give their leading integer). Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

struct JsonMember;

/// A value of a document, with all that is in it.
class JsonValue {
 public:
  using Array = std::vector<JsonValue>;  ///< In document order.
  /// In document order; of members with equal names the first one counts.
  using Object = std::vector<JsonMember>;

  JsonValue() = default;
  /// Of a boolean, a number, a text, an array or an object.
  template <class T>
  requires(!std::is_same_v<std::decay_t<T>, JsonValue>) explicit JsonValue(T&& value)
      : value_(std::forward<T>(value)) {}

  /// Whether it is null, as it is when it is made.
  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
  /// This and each of the following: null where the value is of another kind.
  const bool* boolean() const { return std::get_if<bool>(&value_); }
  /// A number without fraction and exponent that 64 bits can hold.
  const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
  /// A number with a fraction or an exponent, or an integer beyond 64 bits.
  const double* real() const { return std::get_if<double>(&value_); }
  /// UTF-8.
  const std::string* text() const { return std::get_if<std::string>(&value_); }
  const Array* array() const { return std::get_if<Array>(&value_); }     ///< Its values.
  const Object* object() const { return std::get_if<Object>(&value_); }  ///< Its members.

  /// Any number or boolean as a double.
  std::optional<double> number() const;
  /// Any number or boolean as a whole one: truncated towards zero, saturated at 64 bits.
  std::optional<std::int64_t> wholeNumber() const;
  /// The first member of that name; null for none, or where this is no object.
  const JsonValue* find(std::string_view name) const;

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object> value_;
};

/// A member of an object.
struct JsonMember {
  std::string name;  ///< UTF-8, escapes resolved.
  JsonValue value;   ///< What stands behind the colon.
};

/// What begins and ends in a document: an `object` or an `array`.
enum class JsonContainer : std::uint8_t { object, array };

/// A value that holds no others. It lives as long as the call that hands it over.
struct JsonScalar {
  /// `null`, a `boolean`, a number (`integer`, or `real` with a fraction, an exponent or more than
  /// 64 bits) or a `text`.
  enum class Kind : std::uint8_t { null, boolean, integer, real, text };

  Kind kind = Kind::null;  ///< Which of the following count.
  /// Of a boolean (0 or 1) and of an integer.
  std::int64_t integer = 0;
  /// Of a number with a fraction or an exponent, and of an integer beyond 64 bits.
  double real = 0;
  /// The characters of a text, or a number as the document writes it.
  std::string_view text = {};

  /// Whether it stood in quotes.
  bool isText() const { return kind == Kind::text; }
  /// Booleans are numbers too.
  bool isNumber() const { return kind != Kind::null && kind != Kind::text; }
  /// Of a number: truncated towards zero, saturated at 64 bits.
  std::int64_t wholeNumber() const { return kind == Kind::real ? truncated() : integer; }

 private:
  std::int64_t truncated() const;
};

/// Hears a document from its beginning to its end. Names are those of members; what lies in an
/// array, and the outermost value, has an empty one. All members are reported, equal names too: the
/// first one is to count.
class JsonEvents {
 public:
  virtual ~JsonEvents() = default;
  /// False passes over it: neither what it holds nor its end is reported.
  virtual bool begin(std::string_view name, JsonContainer container) = 0;
  /// The container that was begun last, and was not passed over, is complete.
  virtual void end() = 0;
  /// A value that holds no others.
  virtual void scalar(std::string_view name, const JsonScalar& value) = 0;
};

/// Reads documents: as a value, or event by event.
class JsonReader : public Need {
 public:
  /// One whole document, or nothing when it is malformed. UTF-8, UTF-16 or UTF-32, with or without
  /// a byte order mark; an object or an array at the top. `reason`, if given, receives a short text
  /// on failure.
  virtual std::optional<JsonValue> parse(std::string_view document,
                                         std::string* reason = nullptr) const = 0;
  /// The same document, reported as it is read. False when it is malformed, which may come to light
  /// only at its end: nothing reported counts then.
  virtual bool read(std::string_view document, JsonEvents& events,
                    std::string* reason = nullptr) const = 0;
};

}  // namespace v0
}  // namespace halvora
