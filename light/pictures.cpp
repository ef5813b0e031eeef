// SPDX-License-Identifier: Apache-2.0
#include "halvora/pictures.h"

#include <cstddef>
#include <string_view>

#include "light/gobo_names.h"

namespace halvora {

namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20;

}  // namespace

Pictures::Pictures(const Platform& platform)
    : Pictures(platform.files, platform.bundles->main, platform.images) {}

// What is no resource of the bundle, or not as a gobo, is a file of the phone's.
std::optional<std::string> Pictures::bytes(const std::string& name) const {
  const std::string resource = goboResource(std::string_view(name).substr(name.rfind('/') + 1));
  auto found = goboName(*bundle_, resource) == name ? bundle_->readResource(resource, kMostBytes)
                                                    : std::nullopt;
  return found ? found : files_->read(name, kMostBytes);
}

std::optional<Image> Pictures::read(const std::string& name) const {
  const auto encoded = bytes(name);
  return encoded ? decoder_->decode(*encoded) : std::nullopt;
}

}  // namespace halvora
