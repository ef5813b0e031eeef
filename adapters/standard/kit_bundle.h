// SPDX-License-Identifier: Apache-2.0
// The kit's own bundle without a folder: its texts are compiled in, in every language that there is
// a table of, and no text reaches a user as a bare key. Threads as of `Bundle`.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/standard/string_table.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/json.h"

namespace halvora {

class KitBundle final : public Bundle {
 public:
  /// `languages` are the user's, best first; English stands in for what theirs lacks.
  KitBundle(const std::vector<std::string>& languages, const JsonReader& json);

  const std::string& identifier() const override { return identifier_; }
  std::optional<FileAttributes> attributes(std::string_view path) const override;
  std::optional<std::vector<std::string>> list(std::string_view folder) const override;
  /// Its tables, as "strings/en.json".
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  /// Nobody plays or draws a table.
  std::string location(std::string_view /*path*/) const override { return {}; }
  std::string localizedString(std::string_view key) const override;

  /// What a host's own bundle lays its texts over, key by key.
  const StringTable& texts() const { return texts_; }

 private:
  const std::string identifier_ = "com.halvora.sdk";
  StringTable texts_;
};

}  // namespace halvora
