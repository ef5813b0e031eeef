// SPDX-License-Identifier: Apache-2.0
// Stands where the torch, the gobo, the notices, the clips and the seat tables will: none of them
// is built yet, so each call is dropped and the seat has no colour. A host that has parts of its
// own hands those to the engine instead.
#pragma once

#include "light/show_parts.h"

namespace halvora {

class UnbuiltParts final : private TorchPart,
                           private GoboPart,
                           private OverlaysPart,
                           private VideoPart,
                           private SeatLutPart {
 public:
  ShowParts parts() { return {*this, *this, *this, *this, *this}; }

 private:
  void turnTorchOn(bool) override {}
  void processLEDMode(int, int) override {}
  void changeGobo() override {}
  void goboPulse() override {}
  void goboPulseRandom() override {}
  void showMapNoSeatOverlay() override {}
  void hideMapNoSeatOverlay() override {}
  void updateLowLightHintState() override {}
  void playVideo(const std::string&) override {}
  void pausePlayers() override {}
  void preloadPixelMapSeatLUT(int, int, std::int64_t, std::int64_t) override {}
  void clearActiveSeatLUT() override {}
  void stopPixelMapLiveSampler() override {}
  MaybeColour colorFromActivePixelMapSeatLUT(int) override { return std::nullopt; }
};

}  // namespace halvora
