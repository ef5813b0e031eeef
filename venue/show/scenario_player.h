// SPDX-License-Identifier: Apache-2.0
// Plays a scenario on a virtual phone: every action becomes one act from outside, in the order of
// the lines. The scenario, the phone and the engine must outlive the play. Main thread of the
// phone.
#pragma once

#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "venue/show/scenario.h"

namespace halvora {

/// What a scenario acts on; works with any run loop.
struct ScenarioStage {
  VirtualBluetooth& bluetooth;
  VirtualApplication& application;
  VirtualDefaults& defaults;
  ShowEngine& engine;
  /// Told of every precompute; may stay absent.
  PrecomputeProgress progress = {};
  PrecomputeCompletion completion = {};
};

/// One action, now.
void perform(const ScenarioAction& action, const ScenarioStage& stage);

/// The phone that a scenario's device line describes, with chance as given.
VirtualPhoneSetup setupOf(const ScenarioDevice& device, std::unique_ptr<Random> random);

/// Schedules the whole scenario, and the loading of the engine's view at its place in it.
void schedule(const Scenario& scenario, VirtualRunLoop& loop, const ScenarioStage& stage);

}  // namespace halvora
