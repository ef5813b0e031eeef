// SPDX-License-Identifier: Apache-2.0
// The parts of a show beside the light: what command processing and the scan cycle ask of the
// torch, the gobo, the notices, the video players and the seat's colours. Each is as narrow as its
// callers need. Main thread; an
// engine owns its own and takes others instead.
#pragma once

#include <cstdint>
#include <string>

#include "halvora/colour.h"

namespace halvora {

class TorchPart {
 public:
  virtual ~TorchPart() = default;
  virtual void turnTorchOn(bool on) = 0;
  virtual void processLEDMode(int mode, int withSpeed) = 0;
};

class GoboPart {
 public:
  virtual ~GoboPart() = default;
  /// Picks and shows the picture of the gobo number in force.
  virtual void changeGobo() = 0;
  /// One fade out and in, again for as long as the gobo's mode asks for it.
  virtual void goboPulse() = 0;
  /// The same, begun after the gobo's delay.
  virtual void goboPulseRandom() = 0;
};

class NoticesPart {
 public:
  virtual ~NoticesPart() = default;
  virtual void showMapNoSeatOverlay() = 0;
  virtual void hideMapNoSeatOverlay() = 0;
  /// Called twice a second for as long as the engine lives.
  virtual void updateLowLightHintState() = 0;
};

class VideoPart {
 public:
  virtual ~VideoPart() = default;
  virtual void playVideo(const std::string& name) = 0;
  /// Pauses player A, then player B.
  virtual void pausePlayers() = 0;
};

class SeatLutPart {
 public:
  virtual ~SeatLutPart() = default;
  /// Makes the table of the seat for that pixel map the active one, as soon as it can be had.
  virtual void preloadPixelMapSeatLUTForVenueId(int venueId, int pixelMapId, std::int64_t seatX,
                                                std::int64_t seatY) = 0;
  /// Forgets the requested, the loaded and the active table.
  virtual void clearActiveSeatLUT() = 0;
  virtual void stopPixelMapLiveSampler() = 0;
  /// The seat's colour in that frame of the active table; none where there is no table or the frame
  /// has no colour.
  virtual MaybeColour colorFromActivePixelMapSeatLUTForFrameIndex(int frameIndex) = 0;
};

struct ShowParts {
  TorchPart& torch;
  GoboPart& gobo;
  NoticesPart& notices;
  VideoPart& video;
  SeatLutPart& seatLut;
};

}  // namespace halvora
