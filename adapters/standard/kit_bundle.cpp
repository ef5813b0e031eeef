// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/kit_bundle.h"

#include <algorithm>

#include "adapters/standard/kit_tables.h"

namespace halvora {

namespace {

constexpr std::string_view kFolder = "strings";

}  // namespace

KitBundle::KitBundle(const std::vector<std::string>& languages, const JsonReader& json)
    : texts_(stringTableOf(*this, languages, json)) {}

std::optional<std::string> KitBundle::readResource(std::string_view path, std::size_t limit) const {
  const auto tables = kitTables();
  const auto found = std::ranges::find(tables, path, &KitTable::path);
  if (found == tables.end() || found->text.size() > limit) return std::nullopt;
  return std::string(found->text);
}

std::optional<FileAttributes> KitBundle::attributes(std::string_view path) const {
  const auto tables = kitTables();
  if (path == kFolder) return FileAttributes{.isFolder = true};
  const auto found = std::ranges::find(tables, path, &KitTable::path);
  if (found == tables.end()) return std::nullopt;
  return FileAttributes{.size = found->text.size()};
}

std::optional<std::vector<std::string>> KitBundle::list(std::string_view folder) const {
  if (folder != kFolder) return std::nullopt;
  std::vector<std::string> names;
  for (const KitTable& table : kitTables()) {
    names.emplace_back(table.path.substr(kFolder.size() + 1));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string KitBundle::localizedString(std::string_view key) const { return textIn(texts_, key); }

}  // namespace halvora
