// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/kit_bundle.h"

#include "adapters/standard/kit_tables.h"

namespace halvora {

KitBundle::KitBundle(const std::vector<std::string>& languages, const JsonReader& json)
    : texts_(stringTableOf(*this, languages, json)) {}

std::optional<std::string> KitBundle::readResource(std::string_view path, std::size_t limit) const {
  for (const KitTable& table : kitTables()) {
    if (table.path == path && table.text.size() <= limit) return std::string(table.text);
  }
  return std::nullopt;
}

std::string KitBundle::localizedString(std::string_view key) const { return textIn(texts_, key); }

}  // namespace halvora
