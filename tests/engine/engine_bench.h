// SPDX-License-Identifier: Apache-2.0
// An engine on a virtual phone, with everything that it does to the outside written into one log in
// the order in which it happens: views, brightness, haptics, defaults, timers, radio, callbacks and
// the calls of its parts. A test owns one.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/virtual/virtual_phone.h"
#include "engine/inside.h"
#include "tests/engine/recording_parts.h"
#include "tests/engine/recording_platform.h"

namespace halvora {

using Acts = std::vector<std::string>;
using Changes = std::initializer_list<std::pair<BroadcastValue, int>>;

/// A red look of transmitter 258:7 at master 100, without gobo, torch, pixel map or palette,
/// changed as the list says.
Broadcast look(int mode, Changes changes = {});
/// The same look changed once more.
Broadcast changed(Broadcast broadcast, Changes changes);

/// Palettes 1 (blue, green), 2 (yellow, magenta, cyan), 50 (white), and two under ids that never
/// name a palette.
extern const char* const kBenchPalettes;

struct BenchSetup {
  double brightness = 0.5;
  BluetoothAuthorization authorization = BluetoothAuthorization::allowedAlways;
  CentralState state = CentralState::poweredOn;
  ScriptedRandom::Rule random = ScriptedRandom::Rule::least;
  /// Draws that come before those of the rule.
  std::vector<std::uint32_t> draws = {};
  std::optional<std::string> palettes = kBenchPalettes;
  bool isViewLoaded = true;
  bool hasCallbacks = true;
  UsageEndpoints usageEndpoints = {};
};

class EngineBench : private ViewObserver {
 public:
  explicit EngineBench(BenchSetup setup = {});
  ~EngineBench() override;

  ShowEngine& engine() { return *engine_; }
  HalvoraViewController& controller() { return *controller_; }
  const EngineState& state() const { return engine_->state(); }
  const ScreenState& screen() const { return state().screen; }
  const PresenceState& presence() const { return state().presence; }
  ViewStack& views() { return engine_->views(); }
  /// For values that parts beside the engine's own write.
  EngineState& writableState() { return const_cast<EngineState&>(engine_->state()); }
  void destroyEngine();

  void seat(const char* section, const char* xPos, const char* yPos);
  /// The text or the number under a default, as text.
  std::string defaultsText(std::string_view key) const;

  void runTo(long long time) { phone.loop.runUntil(milliseconds(time)); }
  /// Starts the engine and stands at 1000 ms, just after the first scan began and the first cycle
  /// ran.
  void listen();

  PacketFate process(const Broadcast& broadcast) { return engine_->processEffect(broadcast); }
  /// Puts an advertisement on the air and says what became of it.
  PacketFate hear(const Advertisement& advertisement);
  PacketFate hear(const std::vector<std::uint8_t>& data);
  PacketFate hear(const Broadcast& broadcast);
  /// The same with the next sequence number.
  PacketFate hearNext(const Broadcast& broadcast);

  /// Empties the log and returns what was in it: everything, or the acts that begin with one of
  /// those words.
  Acts take() { return log.drain(); }
  Acts take(std::initializer_list<std::string_view> words);

  VirtualPhone phone;
  ActLog log;
  /// What the seat's table holds, by frame.
  std::map<int, Colour> seatColours;

 private:
  void alphaChanged(ViewId view, double alpha, Duration duration) override;
  void hiddenChanged(ViewId view, bool hidden) override;
  void textChanged(ViewId view, const std::string& text) override;
  void lightChanged(const MaybeColour& colour) override;
  void lightAnimationStarted(const MaybeColour& to, Duration duration) override;
  void lightAnimationEnded(bool finished) override;

  RecordingPlatform recorders_;
  RecordingParts parts_;
  std::uint16_t sequence_ = 0;
  std::unique_ptr<HalvoraViewController> controller_;
  /// The controller's.
  ShowEngine* engine_ = nullptr;
};

}  // namespace halvora
