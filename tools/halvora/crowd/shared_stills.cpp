// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/shared_stills.h"

namespace halvora {

std::optional<std::string> SharedResources::readResource(std::string_view path,
                                                         std::size_t limit) const {
  const std::string key = std::to_string(limit) + ':' + std::string(path);
  return recent_.get(
      key, [&] { return bundle_.readResource(path, limit); },
      [](const std::optional<std::string>& text) { return text ? text->size() : 0; });
}

std::optional<Image> SharedPictures::decode(std::string_view bytes) const {
  // The copy for the caller is made after the lock is let go.
  const auto picture = recent_.get(
      bytes, [&] { return std::make_shared<const std::optional<Image>>(decoder_.decode(bytes)); },
      [](const auto& kept) { return *kept ? (*kept)->rgba.size() : 0; });
  return *picture;
}

}  // namespace halvora
