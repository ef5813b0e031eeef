// SPDX-License-Identifier: Apache-2.0
// Bundles: resources and string tables that are only read, one bundle of the host application and
// one of the kit itself: a folder, a part of the program, an archive. A resource is named by its
// path within the bundle, UTF-8, with '/' between names. Resources: any thread; identifier and
// texts: main thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/files.h"
#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class Bundle : public Need {
 public:
  /// Such as "com.example.host".
  virtual const std::string& identifier() const = 0;
  /// What is known of a resource, or of a folder of them, without reading it: a resource that has
  /// changed has another size or another time. None where there is neither.
  virtual std::optional<FileAttributes> attributes(std::string_view path) const = 0;
  /// The names in a folder of resources, in the order of `Files::list`. None where there is no such
  /// folder, or it cannot be listed.
  virtual std::optional<std::vector<std::string>> list(std::string_view folder) const = 0;
  /// A whole resource by its path relative to the bundle, or none when it is missing, unreadable or
  /// larger than `limit` bytes.
  virtual std::optional<std::string> readResource(std::string_view path,
                                                  std::size_t limit) const = 0;
  /// Where players of clips and decoders of videos, who read by themselves, find a resource or what
  /// lies in a folder of them: a path of the phone's `Files`, or whatever else they understand.
  /// Empty where they have no way to it. Says nothing of whether it is there.
  virtual std::string location(std::string_view path) const = 0;
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
