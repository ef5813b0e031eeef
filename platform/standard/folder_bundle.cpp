// SPDX-License-Identifier: Apache-2.0
#include "platform/standard/folder_bundle.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/standard/standard_files.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestStringTable = 1 << 20;
constexpr const char* kShippedLanguage = "en";
constexpr std::size_t kLongestLanguageTag = 64;

// A language names a file, so it is letters, digits and hyphens or it is nothing.
bool isLanguageTag(std::string_view tag) {
  return !tag.empty() && tag.size() <= kLongestLanguageTag &&
         std::all_of(tag.begin(), tag.end(), [](char character) {
           return (character >= 'a' && character <= 'z') ||
                  (character >= 'A' && character <= 'Z') ||
                  (character >= '0' && character <= '9') || character == '-';
         });
}

}  // namespace

FolderBundle::FolderBundle(std::string folder, std::string identifier,
                           const std::vector<std::string>& languages, const JsonReader& json)
    : FolderBundle(std::move(folder), std::move(identifier)) {
  if (folder_.empty()) return;
  for (std::string tag : languages) {
    bool found = addTable(tag, json);
    while (!found && tag.find('-') != std::string::npos) {
      tag.resize(tag.rfind('-'));
      found = addTable(tag, json);
    }
    if (found) break;
  }
  addTable(kShippedLanguage, json);
}

bool FolderBundle::addTable(const std::string& language, const JsonReader& json) {
  if (!isLanguageTag(language)) return false;
  const auto text = readResource("strings/" + language + ".json", kLargestStringTable);
  const std::optional<JsonValue> table = text ? json.parse(*text) : std::nullopt;
  if (!table || table->object() == nullptr) return false;
  for (const JsonMember& member : *table->object()) {
    if (member.value.text() != nullptr) strings_.emplace(member.name, *member.value.text());
  }
  return true;
}

std::optional<std::string> FolderBundle::readResource(std::string_view path,
                                                      std::size_t limit) const {
  if (folder_.empty()) return std::nullopt;
  return readFile(folder_ + "/" + std::string(path), limit);
}

std::string FolderBundle::localizedString(std::string_view key) const {
  const auto found = strings_.find(key);
  return found == strings_.end() ? std::string(key) : found->second;
}

std::vector<std::string> languagesOfEnvironment() {
  std::vector<std::string> languages;
  for (const char* variable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    std::string_view rest = value != nullptr ? value : "";
    while (!rest.empty()) {
      const std::string_view entry = rest.substr(0, rest.find(':'));
      rest.remove_prefix(std::min(entry.size() + 1, rest.size()));
      std::string tag(entry.substr(0, entry.find_first_of(".@")));
      std::replace(tag.begin(), tag.end(), '_', '-');
      if (isLanguageTag(tag)) languages.push_back(std::move(tag));
    }
  }
  return languages;
}

}  // namespace halvora
