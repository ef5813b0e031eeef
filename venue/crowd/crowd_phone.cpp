// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_phone.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include "text/seat_defaults.h"
#include "venue/show/scenario_player.h"

namespace halvora {

namespace {

double visible(const ViewStack& views, ViewId view) {
  return views.isHidden(view) ? 0 : std::clamp(views.shownAlpha(view), 0.0, 1.0);
}

std::uint8_t byteOf(double level) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(level, 0.0, 1.0) * 255));
}

}  // namespace

CrowdPhone::CrowdPhone(CrowdGround& ground, const CrowdParts& parts, const CrowdSeat& seat,
                       std::uint64_t seed)
    : random_(seed),
      radio_(ground.loop, parts.device),
      screen_(parts.device.bounds, parts.device.brightness),
      defaults_(ground.defaults, seat),
      torch_(parts.device.torch),
      seat_(seat),
      engine_(platform(ground, parts), parts.engine) {
  engine_.setAllowedTransmitterIds(parts.allowedTransmitterIds);
}

Platform CrowdPhone::platform(CrowdGround& ground, const CrowdParts& parts) {
  Platform platform{.runLoop = ground.loop,
                    .queues = ground.queues,
                    .wallClock = ground.wallClock,
                    .calendar = ground.calendar,
                    .random = random_,
                    .bluetooth = radio_,
                    .screen = screen_,
                    .application = application_,
                    .defaults = defaults_,
                    .bundles = parts.bundles,
                    .json = parts.json,
                    .torch = torch_,
                    .images = parts.images,
                    .files = parts.files};
  if (parts.codes != nullptr) platform.codes = *parts.codes;
  return platform;
}

std::optional<BroadcastKeyBytes> CrowdPhone::look() const {
  const PresenceState& presence = engine_.state().presence;
  if (!presence.hasCurrentBroadcast) return std::nullopt;
  return presence.currentBroadcast;
}

void CrowdPhone::leave() {
  hasLeft_ = true;
  radio_.setState(CentralState::poweredOff);
}

// A crowd's phones have seats of their own, whatever seat the scenario was recorded in.
void CrowdPhone::write(const DefaultsAction& action) {
  for (const auto& [key, value] : action.writes) {
    if (std::ranges::find(kSeatKeys, key) != kSeatKeys.end()) continue;
    if (value) {
      defaults_.set(key, *value);
    } else {
      defaults_.remove(key);
    }
  }
}

struct CrowdPhone::Actor : ScenarioActs<CrowdRadio, CrowdApplication> {
  CrowdPhone& phone;

  using ScenarioActs::operator();
  void operator()(const PacketAction& action) const { phone.hear(action.data); }
  void operator()(const DefaultsAction& action) const { phone.write(action); }
  void operator()(const PrecomputeAction& action) const {
    engine.precomputePixelMapLUTsForVenueId(action.venueId, phone.seat_.at.x, phone.seat_.at.y);
  }
};

void CrowdPhone::act(const ScenarioAction& action) {
  std::visit(Actor{{radio_, application_, engine_}, *this}, action);
}

CrowdPhone::Heard CrowdPhone::hear(std::span<const std::uint8_t> data) {
  const ScanDiagnostics& fates = engine_.diagnostics();
  const std::uint64_t processed = fates[PacketFate::processed];
  const std::uint64_t same = fates[PacketFate::sameBroadcast];
  radio_.advertise(data);
  if (fates[PacketFate::processed] != processed) return Heard::newLook;
  return fates[PacketFate::sameBroadcast] != same ? Heard::sameLook : Heard::nothing;
}

Colour CrowdPhone::plainLight() const {
  return engine_.views().shownLight().value_or(Colour{0, 0, 0, 0});
}

Emission CrowdPhone::emission() {
  if (hasLeft_) return {};
  // What is on the screen first: it may decide about the two others.
  const Levels screen = engine_.shownScreen();
  return {screen, screen_.brightness(), torch_.isOn()};
}

CrowdLight CrowdPhone::light() const {
  CrowdLight light;
  if (hasLeft_) return light;
  const ViewStack& views = engine_.views();
  light.isTorchOn = torch_.isOn();
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
