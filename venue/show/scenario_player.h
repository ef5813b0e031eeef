// SPDX-License-Identifier: Apache-2.0
// What the actions of a scenario do to a phone and its engine. Main thread of the phone.
#pragma once

#include <memory>
#include <variant>

#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "venue/show/scenario.h"

namespace halvora {

/// What an action does, whatever the phone's radio and application are made of.
template <class Radio, class App>
struct ScenarioActs {
  Radio& bluetooth;
  App& application;
  ShowEngine& engine;

  void operator()(const LoadAction&) const { engine.viewDidLoad(); }
  void operator()(const StartAction&) const { engine.start(); }
  void operator()(const BluetoothAction& action) const {
    if (action.authorization) bluetooth.setAuthorization(*action.authorization);
    if (action.state) bluetooth.setState(*action.state);
  }
  void operator()(const AppAction& action) const {
    if (action.isActive) {
      application.becomeActive();
    } else {
      application.resignActive();
    }
  }
  void operator()(const PlayVideoAction& action) const { engine.playVideo(action.name); }
  void operator()(const InvalidateAction& action) const {
    engine.invalidatePixelMapSeatLUTCacheForVenueId(action.venueId);
  }
};

/// What a scenario acts on; works with any run loop.
struct ScenarioStage : ScenarioActs<VirtualBluetooth, VirtualApplication> {
  VirtualDefaults& defaults;
  /// Told of every precompute; may stay absent.
  PrecomputeProgress progress = {};
  PrecomputeCompletion completion = {};

  using ScenarioActs::operator();
  void operator()(const PacketAction& action) const { bluetooth.advertise(action.data); }
  void operator()(const DefaultsAction& action) const;
  void operator()(const PrecomputeAction& action) const;
};

/// One action, now.
inline void perform(const ScenarioAction& action, const ScenarioStage& stage) {
  std::visit(stage, action);
}

/// The phone that a scenario's device line describes, with chance as given.
VirtualPhoneSetup setupOf(const ScenarioDevice& device, std::unique_ptr<Random> random);

}  // namespace halvora
