// SPDX-License-Identifier: Apache-2.0
// A bundle that is a folder: resources as files, texts as a string table. Which table serves is
// settled when the bundle is made. Threads as of `Bundle`, and of the files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/standard/string_table.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/json.h"

namespace halvora {

class FolderBundle final : public Bundle {
 public:
  /// An empty folder makes a bundle without resources. `languages` are the user's, best first. What
  /// the folder's tables lack is looked up in `beneath`, key by key. The files outlive the bundle.
  FolderBundle(const Files& files, std::string folder, std::string identifier,
               const std::vector<std::string>& languages, const JsonReader& json,
               StringTable beneath = {});
  /// A bundle of resources alone: every text is its key.
  FolderBundle(const Files& files, std::string folder, std::string identifier)
      : files_(files), folder_(std::move(folder)), identifier_(std::move(identifier)) {}

  const std::string& identifier() const override { return identifier_; }
  std::optional<FileAttributes> attributes(std::string_view path) const override;
  std::optional<std::vector<std::string>> list(std::string_view folder) const override;
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string location(std::string_view path) const override;
  std::string localizedString(std::string_view key) const override;

 private:
  const Files& files_;
  std::string folder_;
  std::string identifier_;
  StringTable strings_;
};

/// The user's languages from the environment (LANGUAGE, LC_ALL, LC_MESSAGES, LANG), best first, as
/// "de-AT".
std::vector<std::string> languagesOfEnvironment();

}  // namespace halvora
