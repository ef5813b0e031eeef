// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/string_table.h"

#include <algorithm>
#include <optional>

namespace halvora {

namespace {

constexpr const char* kShippedLanguage = "en";
constexpr std::size_t kLongestLanguageTag = 64;

// What is in the table already stays. False where there is no such table.
bool addTable(StringTable& table, const Bundle& bundle, const std::string& language,
              const JsonReader& json) {
  if (!isLanguageTag(language)) return false;
  const auto text = bundle.readResource("strings/" + language + ".json", kLargestStringTable);
  const std::optional<JsonValue> document = text ? json.parse(*text) : std::nullopt;
  if (!document || document->object() == nullptr) return false;
  for (const JsonMember& member : *document->object()) {
    if (member.value.text() != nullptr) table.emplace(member.name, *member.value.text());
  }
  return true;
}

}  // namespace

StringTable stringTableOf(const Bundle& bundle, const std::vector<std::string>& languages,
                          const JsonReader& json) {
  StringTable table;
  for (std::string tag : languages) {
    bool found = addTable(table, bundle, tag, json);
    while (!found && tag.find('-') != std::string::npos) {
      tag.resize(tag.rfind('-'));
      found = addTable(table, bundle, tag, json);
    }
    if (found) break;
  }
  addTable(table, bundle, kShippedLanguage, json);
  return table;
}

std::string textIn(const StringTable& table, std::string_view key) {
  const auto found = table.find(key);
  return found == table.end() ? std::string(key) : found->second;
}

bool isLanguageTag(std::string_view tag) {
  return !tag.empty() && tag.size() <= kLongestLanguageTag &&
         std::all_of(tag.begin(), tag.end(), [](char character) {
           return (character >= 'a' && character <= 'z') ||
                  (character >= 'A' && character <= 'Z') ||
                  (character >= '0' && character <= '9') || character == '-';
         });
}

}  // namespace halvora
