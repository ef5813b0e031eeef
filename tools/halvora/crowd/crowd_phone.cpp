// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/crowd_phone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <variant>

namespace halvora {

namespace {

// A crowd's phones have seats of their own, whatever seat the scenario was recorded in.
constexpr std::array<std::string_view, 5> kSeatKeys = {"xPos", "yPos", "selectedSection",
                                                       "selectedRow", "selectedSeat"};

DefaultsAction withoutSeat(const DefaultsAction& action) {
  DefaultsAction rest;
  std::ranges::copy_if(action.writes, std::back_inserter(rest.writes), [](const auto& write) {
    return std::ranges::find(kSeatKeys, write.first) == kSeatKeys.end();
  });
  return rest;
}

double visible(const ViewStack& views, ViewId view) {
  return views.isHidden(view) ? 0 : std::clamp(views.shownAlpha(view), 0.0, 1.0);
}

std::uint8_t byteOf(double level) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(level, 0.0, 1.0) * 255));
}

}  // namespace

CrowdPhone::CrowdPhone(RunLoop& loop, SerialQueues& queues, const CrowdParts& parts,
                       const CrowdSeat& seat, std::uint64_t seed)
    : wallClock_(loop),
      random_(seed),
      bluetooth_(loop),
      screen_(parts.device.bounds, parts.device.brightness),
      seat_(seat),
      engine_(platform(loop, queues, parts), parts.engine) {
  engine_.setAllowedTransmitterIds(parts.allowedTransmitterIds);
}

Platform CrowdPhone::platform(RunLoop& loop, SerialQueues& queues, const CrowdParts& parts) {
  bluetooth_.log.isKept = screen_.log.isKept = haptics_.log.isKept = false;
  defaults_.log.isKept = http_.log.isKept = false;
  torch_.isFitted = parts.device.torch;
  bluetooth_.setAuthorization(parts.device.authorization);
  bluetooth_.setState(parts.device.state);
  defaults_.setFromOutside("xPos", seat_.at.x);
  defaults_.setFromOutside("yPos", seat_.at.y);
  defaults_.setFromOutside("selectedSection", std::string(seat_.section));
  return {loop,          queues,      wallClock_,   calendar_,    random_,
          bluetooth_,    screen_,     haptics_,     application_, defaults_,
          parts.bundles, http_,       parts.json,   torch_,       parts.images,
          parts.players, parts.files, parts.videos, parts.workers};
}

void CrowdPhone::leave() {
  hasLeft_ = true;
  bluetooth_.setState(CentralState::poweredOff);
}

void CrowdPhone::act(const ScenarioAction& action) {
  const ScenarioStage stage{bluetooth_, application_, defaults_, engine_};
  if (const auto* precompute = std::get_if<PrecomputeAction>(&action)) {
    perform(PrecomputeAction{precompute->venueId, seat_.at.x, seat_.at.y}, stage);
  } else if (const auto* defaults = std::get_if<DefaultsAction>(&action)) {
    perform(withoutSeat(*defaults), stage);
  } else {
    perform(action, stage);
  }
}

bool CrowdPhone::hear(std::span<const std::uint8_t> data) {
  const std::uint64_t before = engine_.diagnostics()[PacketFate::processed];
  bluetooth_.advertise({data});
  return engine_.diagnostics()[PacketFate::processed] != before;
}

Colour CrowdPhone::plainLight() const {
  return engine_.views().shownLight().value_or(Colour{0, 0, 0, 0});
}

CrowdLight CrowdPhone::light() const {
  CrowdLight light;
  if (hasLeft_) return light;
  const ViewStack& views = engine_.views();
  light.isTorchOn = torch_.isOn;
  const double shown = visible(views, ViewId::container);
  light.isShowing = shown > 0;
  const Colour plain = plainLight();
  const double share = shown * (1 - visible(views, ViewId::dimmerView)) *
                       visible(views, ViewId::lightView) * static_cast<double>(plain.alpha);
  light.red = byteOf(static_cast<double>(plain.red) * share);
  light.green = byteOf(static_cast<double>(plain.green) * share);
  light.blue = byteOf(static_cast<double>(plain.blue) * share);
  return light;
}

}  // namespace halvora
