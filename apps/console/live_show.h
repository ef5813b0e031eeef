// SPDX-License-Identifier: Apache-2.0
// One engine on a phone in memory, playing a scenario in the time of the run loop that it is given.
// Starts when it is made, and stops when it goes; everything handed in must outlive it. Main
// thread.
#pragma once

#include <cstdint>
#include <functional>

#include "apps/console/demo_phone.h"
#include "apps/console/libraries.h"
#include "apps/console/show_files.h"
#include "engine/show_engine.h"
#include "halvora/pictures.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "venue/show/scenario_player.h"
#include "venue/show/scenario_run.h"

namespace halvora {

class LiveShow {
 public:
  /// `ended` is called once, in a turn of its own; it may destroy the show.
  LiveShow(const ShowFiles& files, RunLoop& loop, SerialQueues& queues, DemoLibraries& libraries,
           std::function<void()> ended);

  ViewStack& views() { return engine_.views(); }
  Pictures pictures() { return Pictures(phone_.platform()); }
  std::uint32_t mode() const { return engine_.state().screen.currentMode; }
  /// Since the scenario began.
  Duration time() const { return run_.time(); }

 private:
  /// Does all up to the loading of the view, for whoever shows it; answers with what is left.
  ScenarioSchedule load(const Scenario& scenario);

  DemoPhone phone_;
  ShowEngine engine_;
  const ScenarioStage stage_{{phone_.bluetooth, phone_.application, engine_}, phone_.defaults};
  ScenarioRun run_;
};

}  // namespace halvora
