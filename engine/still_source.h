// SPDX-License-Identifier: Apache-2.0
// The stills of torch pixel maps for many engines of one process: each is read and decoded once
// instead of once an engine. Any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "halvora/platform/image.h"

namespace halvora {

/// A larger file counts as no still.
inline constexpr std::size_t kLargestStill = std::size_t{32} << 20;

class StillSource {
 public:
  /// Null for one that cannot be decoded.
  using Still = std::shared_ptr<const Image>;

  virtual ~StillSource() = default;
  /// By its path in the main bundle; none where there is no such file.
  virtual std::optional<Still> find(const std::string& name) const = 0;
};

}  // namespace halvora
