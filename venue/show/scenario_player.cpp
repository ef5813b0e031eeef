// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario_player.h"

#include <utility>

namespace halvora {

namespace {

struct Performer {
  const ScenarioStage& stage;

  void operator()(const StartAction&) const { stage.engine.start(); }
  void operator()(const BluetoothAction& action) const {
    if (action.authorization) stage.bluetooth.setAuthorization(*action.authorization);
    if (action.state) stage.bluetooth.setState(*action.state);
  }
  void operator()(const PacketAction& action) const { stage.bluetooth.advertise(action.data); }
  void operator()(const AppAction& action) const {
    if (action.isActive) {
      stage.application.becomeActive();
    } else {
      stage.application.resignActive();
    }
  }
  void operator()(const DefaultsAction& action) const {
    for (const auto& [key, value] : action.writes) stage.defaults.setFromOutside(key, value);
  }
  void operator()(const PlayVideoAction& action) const { stage.engine.playVideo(action.name); }
  void operator()(const PrecomputeAction& action) const {
    stage.engine.precomputePixelMapLUTsForVenueId(action.venueId, action.seatX, action.seatY,
                                                  stage.progress, stage.completion);
  }
  void operator()(const InvalidateAction& action) const {
    stage.engine.invalidatePixelMapSeatLUTCacheForVenueId(action.venueId);
  }
};

// Acts at one time run in the order of their lines; the odd orders between them are free for the
// loading of the view.
std::uint64_t orderOf(const ScenarioLine& line) { return line.number * 2; }

// One occurrence schedules the next, so that a long repeat takes no more room than a short one.
struct Occurrence {
  const ScenarioLine* line;
  const ScenarioStage* stage;
  VirtualRunLoop* loop;
  std::uint64_t k;

  void operator()() const {
    perform(line->action, *stage);
    Occurrence next = *this;
    ++next.k;
    next.schedule();
  }
  void schedule() const {
    if (const auto time = line->timeOf(k)) loop->actFromOutside(*time, orderOf(*line), *this);
  }
};

}  // namespace

void perform(const ScenarioAction& action, const ScenarioStage& stage) {
  std::visit(Performer{stage}, action);
}

VirtualPhoneSetup setupOf(const ScenarioDevice& device, std::unique_ptr<Random> random) {
  VirtualPhoneSetup setup;
  setup.brightness = device.brightness;
  setup.bounds = device.bounds;
  setup.authorization = device.authorization;
  setup.state = device.state;
  setup.hasTorch = device.torch;
  setup.random = std::move(random);
  return setup;
}

void schedule(const Scenario& scenario, VirtualRunLoop& loop, const ScenarioStage& stage) {
  const std::size_t before = scenario.linesBeforeLoading();
  const std::uint64_t loading = before == 0 ? 0 : orderOf(scenario.lines[before - 1]) + 1;
  loop.actFromOutside({}, loading, [&stage] { stage.engine.viewDidLoad(); });
  for (const ScenarioLine& line : scenario.lines) Occurrence{&line, &stage, &loop, 0}.schedule();
}

}  // namespace halvora
