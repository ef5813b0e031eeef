// SPDX-License-Identifier: Apache-2.0
// Turns a new look into changes of the show: 18 steps, one function each, in an order that is part
// of the show's behaviour. Each step compares its fields with the state in force and acts on
// changes only. Owned by the engine; main thread.
#pragma once

#include <array>
#include <cstdint>

#include "engine/broadcast.h"
#include "engine/engine_state.h"
#include "engine/scanner.h"

namespace halvora {

/// A look on its way through the steps.
struct Command {
  Broadcast broadcast;
  /// The screen mode; the pixel map may override the one that was sent.
  std::uint32_t mode = 0;
  bool hasSection = false;
  bool hasPosition = false;
  int cueToken = 0;
  PacketFate fate = PacketFate::processed;
};

class CommandProcessor {
 public:
  explicit CommandProcessor(const EngineRooms& rooms) : rooms_(rooms) {}

  /// Processed, or why the look was dropped before it changed anything but the defaults.
  PacketFate process(const Broadcast& broadcast);

  /// A step says whether the next one follows.
  struct Step {
    const char* name;
    bool (CommandProcessor::*run)(Command&);
  };
  static const std::array<Step, 18>& steps();

 private:
  bool takeApplicationId(Command& command);
  bool takeSyncFlag(Command& command);
  bool takeFields(Command& command);
  bool readSeat(Command& command);
  bool overrideMode(Command& command);
  bool takeVenueAndPreload(Command& command);
  bool takeCueTime(Command& command);
  bool takeColour(Command& command);
  bool takeVideoStatus(Command& command);
  bool setMaster(Command& command);
  bool setVideo(Command& command);
  bool vibrate(Command& command);
  bool setGobo(Command& command);
  bool changeMode(Command& command);
  bool restartPixelMap(Command& command);
  bool showColour(Command& command);
  bool scheduleRandomFlash(Command& command);
  bool setTorch(Command& command);

  void showVideo(int videoId, int videoStatus);
  void hideVideo(bool showEnds);
  void tell(std::function<void()> ShowCallbacks::*what) const;
  void beginShow();
  void endShow();
  void showGobo(std::uint32_t mode, Duration fade);
  void fadeGobo(double alpha, Duration fade, bool thenChange);
  void hideGoboAtOnce();

  EngineRooms rooms_;
};

}  // namespace halvora
