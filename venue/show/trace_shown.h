// SPDX-License-Identifier: Apache-2.0
// Writes down what a virtual phone emits: its screen's mean, its backlight and its torch, whenever
// one of them has changed. Looks at a phone and an engine that outlive it; call `turnEnded` after
// each turn.
#pragma once

#include <functional>
#include <string_view>

#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "halvora/platform/run_loop.h"
#include "light/emission.h"
#include "venue/base/json_line.h"
#include "venue/show/flash_meter.h"

namespace halvora {

/// Looks at a phone at the end of each turn, and every 1/120 s while something moves.
class EmissionWatch {
 public:
  using Seen = std::function<void(Duration time, const Emission& emission)>;

  EmissionWatch(VirtualPhone& phone, ShowEngine& engine, Seen seen);
  EmissionWatch(const EmissionWatch&) = delete;
  EmissionWatch& operator=(const EmissionWatch&) = delete;

  void turnEnded();

 private:
  void lookAgain();

  VirtualPhone& phone_;
  ShowEngine& engine_;
  Seen seen_;
  Timer next_;
};

/// The same as a meter takes it.
PhoneLight phoneLightOf(const Emission& emission);

class ShownWriter {
 public:
  /// `first` is what the phone emits before anything happens, and is not written.
  ShownWriter(const Emission& first, std::function<void(std::string_view)> write)
      : write_(std::move(write)), written_(first) {}

  void add(Duration time, const Emission& emission);

 private:
  std::function<void(std::string_view)> write_;
  Emission written_;
  JsonLine line_;
};

}  // namespace halvora
