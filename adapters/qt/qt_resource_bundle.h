// SPDX-License-Identifier: Apache-2.0
// A bundle that is compiled into the program: a folder of Qt's resource system. It has no folder in
// the file system, so nothing but what is asked of it by name can be read. Main thread.
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
  const std::string& resourcePath() const override { return noPath_; }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string localizedString(std::string_view key) const override;

 private:
  const QString folder_;
  const std::string identifier_;
  const std::string noPath_;
  StringTable strings_;
};

}  // namespace halvora
