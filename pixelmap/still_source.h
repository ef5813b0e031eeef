// SPDX-License-Identifier: Apache-2.0
// The stills of torch pixel maps: a picture for each frame, white where a torch is on. Many engines
// of one process may share a source, which reads and decodes each still once. Any thread.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "halvora/platform/bundle.h"
#include "halvora/platform/image.h"
#include "pixelmap/seat_lut.h"

namespace halvora {

class StillSource {
 public:
  /// Null for one that cannot be decoded.
  using Still = std::shared_ptr<const Image>;

  virtual ~StillSource() = default;
  /// By its path in the main bundle; none where there is no such file.
  virtual std::optional<Still> find(const std::string& name) const = 0;
};

struct StillPlace {
  int venueId = 0;
  int pixelMapId = 0;
  int frame = 0;
};

/// Whether the seat's pixel in the still is pure white; none where there is no still that could be
/// decoded, or no memory for it. A seat beside the picture, or none at all, is not white. Without a
/// source the still is read from the bundle, and decoded no further than the seat's row.
std::optional<bool> isWhiteInStill(const StillPlace& place, const std::optional<SeatPosition>& seat,
                                   const StillSource* source, const Bundle& bundle,
                                   const ImageDecoder& images);

}  // namespace halvora
