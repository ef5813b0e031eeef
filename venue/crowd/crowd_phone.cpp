// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_phone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <variant>

namespace halvora {

namespace {

// A crowd's phones have seats of their own, whatever seat the scenario was recorded in.
constexpr std::array<std::string_view, 5> kSeatKeys = {"xPos", "yPos", "selectedSection",
                                                       "selectedRow", "selectedSeat"};

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
  return {.runLoop = ground.loop,
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
}

void CrowdPhone::leave() {
  hasLeft_ = true;
  radio_.setState(CentralState::poweredOff);
}

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

struct CrowdPhone::Actor {
  CrowdPhone& phone;

  void operator()(const StartAction&) const { phone.engine_.start(); }
  void operator()(const BluetoothAction& action) const {
    if (action.authorization) phone.radio_.setAuthorization(*action.authorization);
    if (action.state) phone.radio_.setState(*action.state);
  }
  void operator()(const PacketAction& action) const { phone.hear(action.data); }
  void operator()(const AppAction& action) const {
    if (action.isActive) {
      phone.application_.becomeActive();
    } else {
      phone.application_.resignActive();
    }
  }
  void operator()(const DefaultsAction& action) const { phone.write(action); }
  void operator()(const PlayVideoAction& action) const { phone.engine_.playVideo(action.name); }
  void operator()(const PrecomputeAction& action) const {
    phone.engine_.precomputePixelMapLUTsForVenueId(action.venueId, phone.seat_.at.x,
                                                   phone.seat_.at.y);
  }
  void operator()(const InvalidateAction& action) const {
    phone.engine_.invalidatePixelMapSeatLUTCacheForVenueId(action.venueId);
  }
};

void CrowdPhone::act(const ScenarioAction& action) { std::visit(Actor{*this}, action); }

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
