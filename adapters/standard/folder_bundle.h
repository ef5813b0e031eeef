// SPDX-License-Identifier: Apache-2.0
// A bundle that is a folder on disk: resources as files, texts as a string table. Which table
// serves is settled when the bundle is made. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/standard/string_table.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/json.h"

namespace halvora {

class FolderBundle final : public Bundle {
 public:
  /// An empty folder makes a bundle without resources. `languages` are the user's, best first. What
  /// the folder's tables lack is looked up in `beneath`, key by key.
  FolderBundle(std::string folder, std::string identifier,
               const std::vector<std::string>& languages, const JsonReader& json,
               StringTable beneath = {});
  /// A bundle of resources alone: every text is its key.
  FolderBundle(std::string folder, std::string identifier)
      : folder_(std::move(folder)), identifier_(std::move(identifier)) {}

  const std::string& identifier() const override { return identifier_; }
  const std::string& resourcePath() const override { return folder_; }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string localizedString(std::string_view key) const override;

 private:
  std::string folder_;
  std::string identifier_;
  StringTable strings_;
};

/// The user's languages from the environment (LANGUAGE, LC_ALL, LC_MESSAGES, LANG), best first, as
/// "de-AT".
std::vector<std::string> languagesOfEnvironment();

}  // namespace halvora
