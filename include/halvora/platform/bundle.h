// SPDX-License-Identifier: Apache-2.0
// Bundles: read-only folders of resources and string tables, one of the host application and one of
// the kit itself. Main thread, apart from `resourcePath`.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class Bundle : public Need {
 public:
  /// Such as "com.example.host".
  virtual const std::string& identifier() const = 0;
  /// The folder that resources lie in; empty where there is none.
  virtual const std::string& resourcePath() const = 0;
  /// A whole resource by its path relative to the bundle, or none when it is missing, unreadable or
  /// larger than `limit` bytes.
  virtual std::optional<std::string> readResource(std::string_view path,
                                                  std::size_t limit) const = 0;
  /// The text in the user's language; the key itself when the table has none.
  virtual std::string localizedString(std::string_view key) const = 0;
};

/// The host's resources, the kit's own, and where the phone keeps what it makes.
struct Bundles {
  Bundle& main;  ///< Of the host application.
  Bundle& kit;   ///< Of the kit: palettes, gobos, clips, texts.
  /// The application's private documents folder; empty for none.
  std::string documents = {};
};

}  // namespace v0
}  // namespace halvora
