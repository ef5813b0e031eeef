// SPDX-License-Identifier: Apache-2.0
// The seat map by way of nlohmann's tree ("nlohmann").
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "bench/seat_map_documents.h"
#include "bench/seat_map_reference.h"

namespace halvora {

namespace {

using Tree = nlohmann::json;

struct NlohmannTree {
  using Value = const Tree*;
  using Key = std::string_view;

  static bool isObject(Value value) { return value->is_object(); }
  static bool isArray(Value value) { return value->is_array(); }
  static std::size_t size(Value array) { return array->size(); }
  static std::optional<Value> find(Value value, const char* name) {
    if (!value->is_object()) return std::nullopt;
    const auto found = value->find(name);
    return found != value->end() ? std::optional(&*found) : std::nullopt;
  }
  template <class Function>
  static void forEach(Value array, Function function) {
    for (const Tree& element : *array) function(&element);
  }
  template <class Function>
  static void forEachMember(Value object, Function function) {
    for (const auto& [key, value] : object->get_ref<const Tree::object_t&>()) function(key, &value);
  }
  // Whole numbers and texts are all that the measured documents have.
  static JsonScalar scalar(Value value) {
    using Kind = JsonScalar::Kind;
    if (value->is_number_integer()) {
      return {.kind = Kind::integer, .integer = value->get<std::int64_t>()};
    }
    if (value->is_string()) {
      return {.kind = Kind::text, .text = value->get_ref<const std::string&>()};
    }
    return {};
  }
};

SeatMap mapByNlohmann(const std::string& document) {
  const Tree root = Tree::parse(document);
  NlohmannTree tree;
  return SeatMapOfTree(tree, kPlainTexts).map(&root);
}

[[maybe_unused]] const bool kAdded =
    addForEachSeatMap("nlohmann", [](benchmark::State& state, const std::string& document) {
      measureSeatMap(state, document, mapByNlohmann);
    });

}  // namespace

}  // namespace halvora
