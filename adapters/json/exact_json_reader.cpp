// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/exact_json_reader.h"

#include <string>
#include <utility>
#include <vector>

#include "adapters/json/json_scanner.h"
#include "adapters/json/unicode_text.h"

namespace halvora {

namespace {

/// Builds the value bottom up: a container collects its children until it ends.
class ValueBuilder final : public JsonEvents {
 public:
  bool begin(std::string_view name, JsonContainer container) override {
    open_.push_back({std::string(name), container, {}, {}});
    return true;
  }
  void end() override {
    Open ended = std::move(open_.back());
    open_.pop_back();
    JsonValue value = ended.container == JsonContainer::object
                          ? JsonValue(std::move(ended.members))
                          : JsonValue(std::move(ended.elements));
    if (open_.empty()) {
      root_ = std::move(value);
    } else {
      add(ended.name, std::move(value));
    }
  }
  void scalar(std::string_view name, const JsonScalar& scalar) override {
    add(name, valueOf(scalar));
  }

  JsonValue& root() { return root_; }

 private:
  struct Open {
    std::string name;
    JsonContainer container;
    JsonValue::Object members;
    JsonValue::Array elements;
  };

  static JsonValue valueOf(const JsonScalar& scalar) {
    switch (scalar.kind) {
      case JsonScalar::Kind::null:
        return JsonValue();
      case JsonScalar::Kind::boolean:
        return JsonValue(scalar.integer != 0);
      case JsonScalar::Kind::integer:
        return JsonValue(scalar.integer);
      case JsonScalar::Kind::real:
        return JsonValue(scalar.real);
      case JsonScalar::Kind::text:
        return JsonValue(std::string(scalar.text));
    }
    return JsonValue();
  }

  void add(std::string_view name, JsonValue value) {
    Open& parent = open_.back();
    if (parent.container == JsonContainer::object) {
      parent.members.push_back({std::string(name), std::move(value)});
    } else {
      parent.elements.push_back(std::move(value));
    }
  }

  std::vector<Open> open_;
  JsonValue root_;
};

}  // namespace

bool ExactJsonReader::read(std::string_view document, JsonEvents& events,
                           std::string* reason) const {
  std::string converted;
  const std::optional<std::string_view> text = utf8Of(document, converted);
  JsonScanner scanner(text.value_or(std::string_view()), events);
  if (text && scanner.scan()) return true;
  if (reason != nullptr) *reason = text ? scanner.reason() : "Half a character.";
  return false;
}

std::optional<JsonValue> ExactJsonReader::parse(std::string_view document,
                                                std::string* reason) const {
  ValueBuilder builder;
  if (!read(document, builder, reason)) return std::nullopt;
  return std::move(builder.root());
}

}  // namespace halvora
