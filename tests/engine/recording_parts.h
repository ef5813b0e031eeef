// SPDX-License-Identifier: Apache-2.0
// The parts beside the light, each call of which becomes a line of the bench's log. They do nothing
// else, so what a test sees is the engine's own doing. Owned by the bench.
#pragma once

#include <map>
#include <string>

#include "light/show_parts.h"
#include "tests/engine/recording_platform.h"

namespace halvora {

class RecordingParts final : private TorchPart,
                             private GoboPart,
                             private NoticesPart,
                             private VideoPart,
                             private SeatLutPart {
 public:
  RecordingParts(ActLog& log, const std::map<int, Colour>& seatColours)
      : log_(log), seatColours_(seatColours) {}
  ShowParts parts() { return {*this, *this, *this, *this, *this}; }

 private:
  void turnTorchOn(bool on) override { log_.add(on ? "torch on" : "torch off"); }
  void processLEDMode(int mode, int withSpeed) override {
    log_.add("ledMode " + std::to_string(mode) + " " + std::to_string(withSpeed));
  }
  void changeGobo() override { log_.add("changeGobo"); }
  void goboPulse() override { log_.add("goboPulse"); }
  void goboPulseRandom() override { log_.add("goboPulseRandom"); }
  void showMapNoSeatOverlay() override { log_.add("showNoSeat"); }
  void hideMapNoSeatOverlay() override { log_.add("hideNoSeat"); }
  void updateLowLightHintState() override { log_.add("lowLight"); }
  void playVideo(const std::string& name) override { log_.add("playVideo " + name); }
  void pausePlayers() override { log_.add("pausePlayers"); }
  void preloadPixelMapSeatLUTForVenueId(int venueId, int pixelMapId, std::int64_t seatX,
                                        std::int64_t seatY) override {
    log_.add("preload " + std::to_string(venueId) + " " + std::to_string(pixelMapId) + " " +
             std::to_string(seatX) + " " + std::to_string(seatY));
  }
  void clearActiveSeatLUT() override { log_.add("clearSeatLut"); }
  void stopPixelMapLiveSampler() override { log_.add("stopSampler"); }
  MaybeColour colorFromActivePixelMapSeatLUTForFrameIndex(int frameIndex) override {
    log_.add("seatColour " + std::to_string(frameIndex));
    const auto found = seatColours_.find(frameIndex);
    return found == seatColours_.end() ? MaybeColour() : MaybeColour(found->second);
  }

  ActLog& log_;
  const std::map<int, Colour>& seatColours_;
};

}  // namespace halvora
