// SPDX-License-Identifier: Apache-2.0
#include "venue/show/scenario_player.h"

#include <utility>

namespace halvora {

void ScenarioStage::operator()(const DefaultsAction& action) const {
  for (const auto& [key, value] : action.writes) defaults.setFromOutside(key, value);
}

void ScenarioStage::operator()(const PrecomputeAction& action) const {
  engine.precomputePixelMapLUTsForVenueId(action.venueId, action.seatX, action.seatY, progress,
                                          completion);
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

}  // namespace halvora
