// SPDX-License-Identifier: Apache-2.0
// Any bytes as the kit's small JSON documents: values and events tell the same story, RapidJSON
// accepts the same texts, and each document's rules hold for what was read of it.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/string_table.h"
#include "adapters/virtual/virtual_storage.h"
#include "halvora/platform/json.h"
#include "light/palettes.h"
#include "seats/map_versions.h"
#include "seats/seat_texts.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/json_reference.h"

namespace halvora {

namespace {

const JsonReader& reader() {
  static const ExactJsonReader kReader;
  return kReader;
}

// Puts the events together again. It is called by the reader, so it only notes what is wrong.
class TreeOfEvents final : public JsonEvents {
 public:
  bool begin(std::string_view name, JsonContainer container) override {
    open_.push_back({std::string(name), container == JsonContainer::object, {}, {}});
    return true;
  }
  void end() override {
    isConsistent = isConsistent && !open_.empty();
    if (open_.empty()) return;
    Open ended = std::move(open_.back());
    open_.pop_back();
    JsonValue value =
        ended.isObject ? JsonValue(std::move(ended.members)) : JsonValue(std::move(ended.elements));
    if (open_.empty()) {
      whole = std::move(value);
    } else {
      add(ended.name, std::move(value));
    }
  }
  void scalar(std::string_view name, const JsonScalar& value) override {
    add(name, valueOf(value));
  }

  JsonValue whole;
  bool isConsistent = true;

 private:
  struct Open {
    std::string name;
    bool isObject;
    JsonValue::Object members;
    JsonValue::Array elements;
  };

  static JsonValue valueOf(const JsonScalar& value) {
    switch (value.kind) {
      case JsonScalar::Kind::boolean:
        return JsonValue(value.integer != 0);
      case JsonScalar::Kind::integer:
        return JsonValue(value.integer);
      case JsonScalar::Kind::real:
        return JsonValue(value.real);
      case JsonScalar::Kind::text:
        return JsonValue(std::string(value.text));
      case JsonScalar::Kind::null:
        break;
    }
    return {};
  }
  // What lies in an array, and the document itself, has no name.
  void add(std::string_view name, JsonValue value) {
    isConsistent = isConsistent && !open_.empty() && (open_.back().isObject || name.empty());
    if (open_.empty()) return;
    Open& into = open_.back();
    if (into.isObject) {
      into.members.push_back({std::string(name), std::move(value)});
    } else {
      into.elements.push_back(std::move(value));
    }
  }

  std::vector<Open> open_;
};

bool isSame(const JsonValue& left, const JsonValue& right) {
  if (const auto* members = left.object()) {
    const auto* others = right.object();
    return others != nullptr && std::ranges::equal(*members, *others, [](auto& a, auto& b) {
             return a.name == b.name && isSame(a.value, b.value);
           });
  }
  if (const auto* elements = left.array()) {
    const auto* others = right.array();
    return others != nullptr && std::ranges::equal(*elements, *others, isSame);
  }
  const auto isEqual = [](const auto* a, const auto* b) {
    return (a == nullptr) == (b == nullptr) && (a == nullptr || *a == *b);
  };
  return left.isNull() == right.isNull() && isEqual(left.boolean(), right.boolean()) &&
         isEqual(left.integer(), right.integer()) && isEqual(left.real(), right.real()) &&
         isEqual(left.text(), right.text()) && right.array() == nullptr &&
         right.object() == nullptr;
}

void checkNumbers(const JsonValue& value) {
  if (const double* real = value.real()) require(!std::isnan(*real), "a number is a number");
  if (const auto* elements = value.array()) std::ranges::for_each(*elements, checkNumbers);
  if (const auto* members = value.object()) {
    for (const JsonMember& member : *members) checkNumbers(member.value);
  }
}

bool isLevel(float level) { return level >= 0 && level <= 1; }

bool isColour(const Colour& colour) {
  return isLevel(colour.red) && isLevel(colour.green) && isLevel(colour.blue) && colour.alpha == 1;
}

}  // namespace

int fuzzJson(FuzzBytes bytes) {
  const std::string_view text = textOf(bytes);
  std::string reason;
  const auto tree = reader().parse(text, &reason);
  require(tree.has_value() == reason.empty(), "a document is refused with a reason");
  if (isComparableJson(text)) {
    require(tree.has_value() == rapidJsonAccepts(text), "another reader takes the same documents");
  }
  TreeOfEvents events;
  require(reader().read(text, events) == tree.has_value(), "events come of the same documents");
  if (!tree) return 0;
  require(tree->array() != nullptr || tree->object() != nullptr, "a document is a container");
  require(events.isConsistent && isSame(*tree, events.whole), "events tell what the values do");
  checkNumbers(*tree);
  return 0;
}

int fuzzPalettes(FuzzBytes bytes) {
  const auto document = reader().parse(textOf(bytes));
  if (!document) return 0;
  const std::vector<Palette> palettes = parsePalettes(*document);
  SeededRandom random(bytes.size());
  ColourState state;
  for (const Palette& palette : palettes) {
    require(!palette.colours.empty(), "a palette has colours");
    require(std::ranges::all_of(palette.colours, isColour), "a palette's colours are colours");
    const auto id = static_cast<std::uint32_t>(palette.id);
    choosePaletteColour(state, palettes, random, id, kWhite);
    for (int step = 0; step < 3; ++step) {
      require(state.currentColour && isColour(*state.currentColour), "a palette shows a colour");
      const bool isListed = state.colorsArray != nullptr;
      require(!isListed || state.currentPaletteIndex < state.colorsArray->size(),
              "a palette's place is in it");
      require(isListed || !namesPalette(id) || id != palette.id, "a palette is found by its id");
      setNextPaletteColor(state, random);
    }
  }
  return 0;
}

int fuzzStrings(FuzzBytes bytes) {
  const std::string_view text = textOf(bytes);
  const std::size_t split = std::min(text.find('\n'), text.size());
  const std::string language(text.substr(0, split));
  VirtualBundle bundle("com.example.host");
  bundle.resources["strings/en.json"] = R"({"a": "A", "b": "B"})";
  const std::string_view table = text.substr(std::min(split + 1, text.size()));
  bundle.resources["strings/de.json"] = table;
  const StringTable own = stringTableOf(bundle, {"de"}, reader());
  require(own.contains("a") && own.contains("b"), "what a table lacks comes from English");
  const auto document = reader().parse(table);
  const bool isTable = document && document->object() != nullptr;
  const JsonValue* first = isTable ? document->find("a") : nullptr;
  if (first != nullptr && first->text() != nullptr) {
    require(textIn(own, "a") == *first->text(), "the first text of a name counts");
  }
  if (isTable) {
    for (const JsonMember& member : *document->object()) {
      const bool isText = member.value.text() != nullptr;
      require(!isText || own.contains(member.name), "a table has all of its texts");
    }
  } else {
    require(textIn(own, "a") == "A", "no table is English");
  }
  const StringTable asked = stringTableOf(bundle, {language, "fr-CA"}, reader());
  require(asked.contains("a") && textIn(asked, "none") == "none", "any language has a table");
  return 0;
}

int fuzzVersions(FuzzBytes bytes) {
  const auto info = mapVersionInfoFromJSON(textOf(bytes), reader());
  const auto document = reader().parse(textOf(bytes));
  const bool isObject = document && document->object() != nullptr;
  require(info.has_value() == isObject, "an object has versions");
  if (!info) return 0;
  const auto plain = [&](const char* name) -> std::int64_t {
    const JsonValue* value = document->find(name);
    if (value == nullptr) return 1;
    if (value->text() != nullptr) return std::max<std::int64_t>(leadingInteger(*value->text()), 1);
    return std::max<std::int64_t>(value->wholeNumber().value_or(1), 1);
  };
  require(info->seatVersion == plain("seatVersion"), "the version of the seats");
  require(info->mapAssetsVersion == plain("mapAssetsVersion"), "the version of the maps");
  return 0;
}

}  // namespace halvora
