// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/folder_bundle.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace halvora {

FolderBundle::FolderBundle(const Files& files, std::string folder, std::string identifier,
                           const std::vector<std::string>& languages, const JsonReader& json,
                           StringTable beneath)
    : FolderBundle(files, std::move(folder), std::move(identifier)) {
  strings_ = stringTableOf(*this, languages, json);
  strings_.merge(beneath);
}

std::optional<std::string> FolderBundle::readResource(std::string_view path,
                                                      std::size_t limit) const {
  if (folder_.empty()) return std::nullopt;
  return files_.read(location(path), limit);
}

std::optional<FileAttributes> FolderBundle::attributes(std::string_view path) const {
  if (folder_.empty()) return std::nullopt;
  return files_.attributes(location(path));
}

std::optional<std::vector<std::string>> FolderBundle::list(std::string_view folder) const {
  if (folder_.empty()) return std::nullopt;
  return files_.list(location(folder));
}

std::string FolderBundle::location(std::string_view path) const {
  std::string found;
  if (folder_.empty()) return found;
  found.reserve(folder_.size() + 1 + path.size());
  return found.append(folder_).append(1, '/').append(path);
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
