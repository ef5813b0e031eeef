// SPDX-License-Identifier: Apache-2.0
// Stands where the seat tables will: they are not built yet, so each call is dropped and the seat
// has no colour. A host that has parts of its own hands those to the engine instead.
#pragma once

#include "light/show_parts.h"

namespace halvora {

class UnbuiltSeatLut final : public SeatLutPart {
 public:
  void preloadPixelMapSeatLUTForVenueId(int, int, std::int64_t, std::int64_t) override {}
  void clearActiveSeatLUT() override {}
  void stopPixelMapLiveSampler() override {}
  MaybeColour colorFromActivePixelMapSeatLUTForFrameIndex(int) override { return std::nullopt; }
};

}  // namespace halvora
