// SPDX-License-Identifier: Apache-2.0
// Takes the members of one JSON object by name, once each, and remembers the first thing that is
// wrong. What was not taken by the end is unknown, and that is wrong too. Lives only while an
// object is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/json.h"

namespace halvora {

class ScenarioFields {
 public:
  explicit ScenarioFields(const JsonValue::Object& members)
      : members_(&members), isTaken_(members.size()) {}

  bool isGood() const { return failure_.empty(); }
  const std::string& failure() const { return failure_; }

  /// Remembers the first failure; answers none, so that a reader can return it.
  std::nullopt_t fail(std::string what) {
    if (failure_.empty()) failure_ = std::move(what);
    return std::nullopt;
  }

  /// The fields of an object that is a member of this one; none, and a failure, where it is no
  /// object.
  ScenarioFields objectIn(const JsonValue& value, const char* name) const {
    static const JsonValue::Object kNothing;
    ScenarioFields inner(value.object() != nullptr ? *value.object() : kNothing);
    inner.within_ = "\"" + std::string(name) + "\": ";
    if (value.object() == nullptr) inner.fail("\"" + std::string(name) + "\" must be an object");
    return inner;
  }

  const JsonValue* take(std::string_view name) {
    const JsonValue* found = nullptr;
    for (std::size_t at = 0; at < members_->size(); ++at) {
      if ((*members_)[at].name != name) continue;
      // Of equal names the first counts; the others are known all the same.
      if (found == nullptr) found = &(*members_)[at].value;
      isTaken_[at] = true;
    }
    return found;
  }

  std::optional<double> number(const char* name, double least, double greatest) {
    const JsonValue* value = take(name);
    if (value == nullptr) return std::nullopt;
    const std::optional<double> number =
        value->boolean() == nullptr ? value->number() : std::nullopt;
    if (!number || !(*number >= least && *number <= greatest)) {
      return failAt(name, "a number in its range");
    }
    return number;
  }

  double requiredNumber(const char* name, double least, double greatest) {
    const std::optional<double> value = number(name, least, greatest);
    if (!value) failAt(name, "given, as a number");
    return value.value_or(0);
  }

  std::int64_t requiredInteger(const char* name) {
    const JsonValue* value = take(name);
    if (value != nullptr && value->integer() != nullptr) return *value->integer();
    failAt(name, "given, as a whole number");
    return 0;
  }

  std::optional<bool> flag(const char* name) {
    const JsonValue* value = take(name);
    if (value == nullptr) return std::nullopt;
    if (value->boolean() == nullptr) return failAt(name, "true or false");
    return *value->boolean();
  }

  /// A whole number from 0 to `greatest`, as the enumerator of that value.
  template <class Enumeration>
  std::optional<Enumeration> enumeration(const char* name, int greatest) {
    const JsonValue* value = take(name);
    if (value == nullptr) return std::nullopt;
    const std::int64_t* number = value->integer();
    if (number == nullptr || *number < 0 || *number > greatest) {
      return failAt(name, "a whole number from 0 to " + std::to_string(greatest));
    }
    return static_cast<Enumeration>(*number);
  }

  /// Whether all is well, unknown members included.
  bool end() {
    for (std::size_t at = 0; at < members_->size(); ++at) {
      if (!isTaken_[at]) fail(within_ + "unknown key \"" + (*members_)[at].name + "\"");
    }
    return isGood();
  }
  /// The same for an inner object; hands a failure outwards.
  bool end(ScenarioFields& outer) {
    if (!end()) outer.fail(failure_);
    return isGood();
  }

 private:
  std::nullopt_t failAt(const char* name, const std::string& must) {
    return fail(within_ + "\"" + name + "\" must be " + must);
  }

  const JsonValue::Object* members_;
  std::vector<bool> isTaken_;
  std::string within_;
  std::string failure_;
};

}  // namespace halvora
