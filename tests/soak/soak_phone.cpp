// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/soak_phone.h"

#include <utility>

namespace halvora {

namespace {

constexpr Duration kHour = milliseconds(3'600'000);
/// What ending an hour takes; see EngineWorld::settle.
constexpr Duration kEnding = milliseconds(30'000);

}  // namespace

SoakPhone::SoakPhone(std::uint64_t seed) : random_(seed), world_(seed, seed % 8 != 7) {
  for (int map = 1; map <= EngineWorld::kMaps; ++map) {
    world_.putClip(map, EngineWorld::Clip::whole);
  }
  world_.start();
}

bool SoakPhone::liveAnHour() {
  const Duration end = world_.now() + kHour - kEnding;
  const std::uint32_t kind = below(20);
  if (kind == 0) {
    // The application is not opened.
    world_.beginAnew();
    passUntil(end);
  } else if (kind < 14) {
    quietHour(end);
  } else {
    showHour(end);
  }
  // What the hour left on the phone's disk is not the engine's to hold.
  world_.removeStills();
  world_.invalidate(EngineWorld::kVenue);
  world_.settle();
  return complaint().empty();
}

void SoakPhone::passUntil(Duration time) {
  if (time > world_.now()) world_.pass(time - world_.now());
}

void SoakPhone::quietHour(Duration end) {
  for (std::uint32_t left = below(4); left > 0; --left) {
    world_.pass(milliseconds(1000LL * below(600)));
    fault();
  }
  passUntil(end);
}

void SoakPhone::showHour(Duration end) {
  for (std::uint32_t left = 1 + below(2); left > 0; --left) {
    world_.pass(milliseconds(1000LL * below(600)));
    show(world_.now() + milliseconds(1000LL * (5 + below(55))));
    // A show may go on while the radio is off; not for the whole hour.
    if (!isOneOf(20)) world_.setRadio(CentralState::poweredOn);
  }
  passUntil(end);
}

void SoakPhone::show(Duration end) {
  while (world_.now() < end) {
    look();
    if (isOneOf(24)) fault();
    world_.pass(milliseconds(20 + below(400)));
  }
}

void SoakPhone::look() {
  constexpr std::uint32_t kLooks = 6;
  for (std::uint32_t left = below(kLooks); left > 0; --left) {
    const BroadcastField& field = kBroadcastFields[below(kBroadcastFields.size())];
    field.value.set(packet_, static_cast<int>(below(field.value.largest() + 1U)));
  }
  // Mostly a show of this venue, with what its maps have.
  if (isOneOf(2)) packet_.mode = static_cast<std::uint8_t>(below(24));
  if (isOneOf(2)) packet_.ledMode = static_cast<std::uint8_t>(below(11));
  if (isOneOf(2)) packet_.pixelMapId = static_cast<std::uint8_t>(below(EngineWorld::kMaps + 1));
  if (isOneOf(2)) packet_.paletteId = static_cast<std::uint8_t>(below(3));
  if (isOneOf(2)) packet_.seconds = 0;
  if (!isOneOf(8)) packet_.applicationId = 1;
  if (!isOneOf(8)) packet_.syncFlag = 0;
  if (!isOneOf(8)) packet_.venueId = EngineWorld::kVenue;
  if (!isOneOf(8)) packet_.transmitter = static_cast<std::uint8_t>(1 + below(3));
  ++packet_.sequence;
  world_.hear(packet_);
}

void SoakPhone::fault() {
  switch (below(10)) {
    case 0:
    case 1:
      return radioFault();
    case 2:
      world_.resignActive();
      world_.pass(milliseconds(below(30'000)));
      return world_.becomeActive();
    case 3:
    case 4:
      return fileFault();
    case 5:
    case 6:
      return seatFault();
    case 7:
      return world_.setHost(static_cast<EngineWorld::Host>(below(5)));
    case 8:
      world_.jumpClock((below(200'000) - 100'000.0) * 60);
      return world_.dim(below(256) / 255.0);
    default:
      if (isOneOf(8)) {
        world_.beginAnew();
        return world_.start();
      }
      if (isOneOf(16)) return world_.start();
      return isOneOf(2) ? world_.allow({"1:1", "1:2"}) : world_.allow({});
  }
}

void SoakPhone::radioFault() {
  if (isOneOf(8)) world_.setPermission(static_cast<BluetoothAuthorization>(below(4)));
  world_.setRadio(static_cast<CentralState>(below(6)));
  world_.pass(milliseconds(below(20'000)));
  if (!isOneOf(4)) world_.setRadio(CentralState::poweredOn);
}

void SoakPhone::fileFault() {
  const int map = 1 + static_cast<int>(below(EngineWorld::kMaps));
  switch (below(4)) {
    case 0:
      return world_.putStill(map, 1 + static_cast<int>(below(3)), isOneOf(2));
    case 1:
      return world_.removeStills();
    default:
      return world_.putClip(map, static_cast<EngineWorld::Clip>(below(5)));
  }
}

void SoakPhone::seatFault() {
  switch (below(5)) {
    case 0:
      return world_.sit(0, 0, "");
    case 1:
      return world_.write(
          "xPos", isOneOf(2) ? std::optional(DefaultsValue(std::string("-1"))) : std::nullopt);
    case 2:
      return world_.precompute(EngineWorld::kVenue, below(3), below(3));
    case 3:
      return world_.invalidate(EngineWorld::kVenue);
    default:
      return world_.sit(below(4), below(3), isOneOf(2) ? "A" : "Standing");
  }
}

}  // namespace halvora
