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

class Witness;

/// A look on its way through the steps.
struct Command {
  Broadcast broadcast;
  /// Of the engine, which a host may destroy while it is told of the look.
  Witness& engine;
  /// The screen mode; the pixel map may override the one that was sent.
  std::uint32_t mode = 0;
  bool hasSection = false;
  bool hasPosition = false;
  int cueToken = 0;
  /// The present step was cut short in the look before: what it finds in force may be half of it.
  bool isForced = false;
  PacketFate fate = PacketFate::processed;
};

class CommandProcessor {
 public:
  explicit CommandProcessor(const EngineRooms& rooms) : rooms_(rooms) {}

  /// Processed, or why the look was dropped before it changed anything but the defaults, or failed:
  /// a step threw, for want of memory as a rule, and the ones behind it were not done; or that the
  /// host destroyed the engine: then nothing of the look is done any more.
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
  /// Lets the host act, who may destroy the engine. False if that has happened.
  template <class Act>
  static bool letHost(Witness& engine, const Act& act);
  bool tell(Witness& engine, std::function<void()> ShowCallbacks::*what) const;
  bool beginShow(Witness& engine);
  bool endShow(Witness& engine);
  void showGobo(std::uint32_t mode, Duration fade);
  void fadeGobo(double alpha, Duration fade, bool thenChange);
  void hideGoboAtOnce();

  EngineRooms rooms_;
};

}  // namespace halvora
