// SPDX-License-Identifier: Apache-2.0
// The seat map by way of simdjson's tree ("simdjson"), and the tree alone ("simdjsonReading").
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include "bench/seat_map_documents.h"
#include "bench/seat_map_reference.h"

namespace halvora {

namespace {

namespace dom = simdjson::dom;

struct SimdjsonTree {
  using Value = dom::element;
  using Key = std::string_view;

  static bool isObject(const Value& value) { return value.is_object(); }
  static bool isArray(const Value& value) { return value.is_array(); }
  static std::size_t size(const Value& array) { return dom::array(array).size(); }
  static std::optional<Value> find(const Value& value, std::string_view name) {
    dom::object object;
    Value found;
    if (value.get(object) != simdjson::SUCCESS || object[name].get(found) != simdjson::SUCCESS) {
      return std::nullopt;
    }
    return found;
  }
  template <class Function>
  static void forEach(const Value& array, Function function) {
    for (const Value element : dom::array(array)) function(element);
  }
  template <class Function>
  static void forEachMember(const Value& object, Function function) {
    for (const auto& [key, value] : dom::object(object)) function(key, value);
  }
  // Whole numbers and texts are all that the measured documents have.
  static JsonScalar scalar(const Value& value) {
    using Kind = JsonScalar::Kind;
    JsonScalar scalar;
    if (value.get(scalar.integer) == simdjson::SUCCESS) {
      scalar.kind = Kind::integer;
    } else if (value.get(scalar.text) == simdjson::SUCCESS) {
      scalar.kind = Kind::text;
    }
    return scalar;
  }
};

SeatMap mapBySimdjson(const std::string& document) {
  dom::parser parser;
  dom::element root;
  require(parser.parse(document).get(root) == simdjson::SUCCESS, "simdjson rejects a document");
  SimdjsonTree tree;
  return SeatMapOfTree(tree, kPlainTexts).map(root);
}

void readWithSimdjson(benchmark::State& state, const std::string& document) {
  keepHeap();
  for (auto _ : state) {
    dom::parser parser;
    require(parser.parse(document).error() == simdjson::SUCCESS, "simdjson rejects a document");
  }
}

[[maybe_unused]] const bool kAdded =
    addForEachSeatMap("simdjson",
                      [](benchmark::State& state, const std::string& document) {
                        measureSeatMap(state, document, mapBySimdjson);
                      }) &&
    addForEachSeatMap("simdjsonReading", readWithSimdjson);

}  // namespace

}  // namespace halvora
