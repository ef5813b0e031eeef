// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/folder_bundle.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "adapters/standard/standard_files.h"

namespace halvora {

FolderBundle::FolderBundle(std::string folder, std::string identifier,
                           const std::vector<std::string>& languages, const JsonReader& json,
                           StringTable beneath)
    : FolderBundle(std::move(folder), std::move(identifier)) {
  strings_ = stringTableOf(*this, languages, json);
  strings_.merge(beneath);
}

std::optional<std::string> FolderBundle::readResource(std::string_view path,
                                                      std::size_t limit) const {
  if (folder_.empty()) return std::nullopt;
  return readFile(folder_ + "/" + std::string(path), limit);
}

std::string FolderBundle::localizedString(std::string_view key) const {
  return textIn(strings_, key);
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
