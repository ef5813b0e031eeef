// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/named_map.h"

#include "adapters/virtual/virtual_storage.h"
#include "seats/seat_map_document.h"

namespace halvora {

std::optional<StringTable> readStringTable(std::string_view document, const JsonReader& json) {
  const std::optional<JsonValue> value = json.parse(document);
  if (!value || value->object() == nullptr) return std::nullopt;
  StringTable strings;
  for (const JsonMember& member : *value->object()) {
    if (member.value.text() != nullptr) strings.emplace(member.name, *member.value.text());
  }
  return strings;
}

SeatMap seatMapOf(std::string_view document, const StringTable& strings, const JsonReader& json) {
  VirtualBundle kit("");
  kit.strings = strings;
  return parseSeatMapSectionsFromJSON(document, seatMapTexts(kit), json);
}

}  // namespace halvora
