// SPDX-License-Identifier: Apache-2.0
// A bundle that is compiled into the program: a folder of Qt's resource system, which Qt's pictures
// and players read too, and nobody else. Threads as of `Bundle`.
#pragma once

#include <QString>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/standard/string_table.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/json.h"

namespace halvora {

class QtResourceBundle final : public Bundle {
 public:
  /// The folder as ":/name"; its string tables lie and are chosen as in a folder bundle.
  QtResourceBundle(QString folder, std::string identifier,
                   const std::vector<std::string>& languages, const JsonReader& json);

  const std::string& identifier() const override { return identifier_; }
  std::optional<FileAttributes> attributes(std::string_view path) const override;
  std::optional<std::vector<std::string>> list(std::string_view folder) const override;
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string location(std::string_view path) const override;
  std::string localizedString(std::string_view key) const override;

 private:
  QString nameOf(std::string_view path) const;

  const QString folder_;
  const std::string identifier_;
  StringTable strings_;
};

}  // namespace halvora
