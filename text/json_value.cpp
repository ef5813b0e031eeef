// SPDX-License-Identifier: Apache-2.0
#include "halvora/platform/json.h"
#include "text/numbers.h"

namespace halvora {

const JsonValue* JsonValue::find(std::string_view name) const {
  if (const Object* members = object()) {
    for (const JsonMember& member : *members) {
      if (member.name == name) return &member.value;
    }
  }
  return nullptr;
}

std::optional<double> JsonValue::number() const {
  if (const double* value = real()) return *value;
  if (const std::int64_t* value = integer()) return static_cast<double>(*value);
  if (const bool* value = boolean()) return *value ? 1.0 : 0.0;
  return std::nullopt;
}

std::optional<std::int64_t> JsonValue::wholeNumber() const {
  if (const std::int64_t* value = integer()) return *value;
  const std::optional<double> value = number();
  return value ? std::optional(halvora::wholeNumber(*value)) : std::nullopt;
}

std::int64_t JsonScalar::truncated() const { return halvora::wholeNumber(real); }

}  // namespace halvora
