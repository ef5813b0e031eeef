// SPDX-License-Identifier: Apache-2.0
#include "venue/live/live_session.h"

#include <map>
#include <utility>

#include "venue/show/show_senders.h"

namespace halvora {

LiveSession::LiveSession(const CueList& show, MapFrames frames, RunLoop& loop,
                         SequenceNumbers& numbers, PacketEncoder encode, LiveReport report)
    : loop_(loop),
      numbers_(numbers),
      encode_(std::move(encode)),
      report_(std::move(report)),
      begin_(loop.now()),
      player_(
          show, std::move(frames), loop, numbers,
          {[this](const Broadcast& packet, bool isRepeat) { send(packet, isRepeat); },
           [this](const LiveStatus& status) { report_.changed(loop_.now() - begin_, status); }}) {}

ShowPlace LiveSession::place() const {
  ShowPlace place;
  place.player = player_.place();
  if (place.player.cue) place.cueName = player_.show().cues[*place.player.cue].name;
  for (const Air& air : airs_) {
    if (air.zone && air.look) place.zones.push_back({*air.zone, *air.look});
  }
  return place;
}

void LiveSession::goOn(const ShowPlace& place) {
  for (const ZoneLook& had : place.zones) {
    const std::uint16_t number = numbers_.next();
    for (Air& air : airs_) {
      if (air.zone != had.zone) continue;
      air.look = had.look;
      air.look->sequence = number;
    }
  }
  player_.goOn(place.player);
}

bool LiveSession::isQuit(std::string_view line) {
  const std::size_t end = line.find_last_not_of(" \t\r");
  const std::size_t begin = line.find_first_not_of(" \t");
  return begin != std::string_view::npos && line.substr(begin, end + 1 - begin) == "quit";
}

void LiveSession::obey(std::string_view line) {
  if (hasQuit_) return;
  if (isQuit(line)) {
    hasQuit_ = true;
    return;
  }
  if (const std::string refusal = player_.obey(line); !refusal.empty()) report_.say(refusal);
}

// One air that fails takes nothing from the others.
void LiveSession::send(const Broadcast& packet, bool isRepeat) {
  const LiveState state = player_.status().state;
  const bool wasBlack =
      std::exchange(isBlack_, state == LiveState::blackout || state == LiveState::panic);
  for (std::size_t at = 0; at < airs_.size(); ++at) {
    if (airs_[at].zone) {
      // What other zones showed before the black comes below, with newer numbers.
      if (isMeantFor(airs_[at], packet) || !wasBlack) sendToZone(airs_[at], packet, isRepeat);
      continue;
    }
    Broadcast own = packet;
    own.transmitter = transmitterNumber(packet.transmitter, at);
    airs_[at].air->send(encode_(own), isRepeat);
  }
  if (wasBlack && !isBlack_) giveZonesBack(packet);
  if (const std::string alarm = numbers_.alarm(); alarm != alarm_) {
    alarm_ = alarm;
    report_.say(alarm.empty() ? "the journal of sequence numbers is written again" : alarm);
  }
}

bool LiveSession::isMeantFor(const Air& air, const Broadcast& packet) const {
  return isBlack_ || packet.transmitter == *air.zone || packet.transmitter == kVenueWideTransmitter;
}

// What is for another zone changes nothing in this one, but repeats what it has.
void LiveSession::sendToZone(Air& air, const Broadcast& packet, bool isRepeat) {
  const bool isMeant = isMeantFor(air, packet);
  Broadcast own = packet;
  if (!isBlack_ && isMeant) air.look = packet;
  if (!isMeant) {
    if (!air.look) return;
    own = *air.look;
    isRepeat = true;
  }
  own.transmitter = *air.zone;
  air.air->send(encode_(own), isRepeat);
}

// Phones have heard a newer number since, that of the black. Those of one zone have one look.
void LiveSession::giveZonesBack(const Broadcast& packet) {
  std::map<std::uint8_t, std::uint16_t> numbers;
  for (Air& air : airs_) {
    if (!air.zone || !air.look || air.look->sequence == packet.sequence) continue;
    const auto [number, isNew] = numbers.try_emplace(*air.zone);
    if (isNew) number->second = numbers_.next();
    air.look->sequence = number->second;
    Broadcast own = *air.look;
    own.transmitter = *air.zone;
    air.air->send(encode_(own), false);
  }
}

}  // namespace halvora
