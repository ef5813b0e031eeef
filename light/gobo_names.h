// SPDX-License-Identifier: Apache-2.0
// How the pictures of gobos are called: within the bundle, and in what a face is to draw. Any
// thread.
#pragma once

#include <string>
#include <string_view>

#include "halvora/platform/bundle.h"
#include "text/asset_paths.h"

namespace halvora {

/// The bundle's path of a gobo's picture.
inline std::string goboResource(std::string_view picture) {
  return kGoboFolder + ("/" + std::string(picture));
}

/// Under which a face is told of a resource: where it lies, or its path within a bundle that has it
/// nowhere else.
inline std::string goboName(const Bundle& bundle, std::string_view resource) {
  std::string location = bundle.location(resource);
  return location.empty() ? std::string(resource) : location;
}

}  // namespace halvora
