// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/rogues.h"

#include <algorithm>
#include <array>
#include <utility>

#include "engine/signed_broadcast.h"
#include "venue/base/input_text.h"
#include "venue/crowd/air.h"

namespace halvora {

namespace {

using Data = std::vector<std::uint8_t>;
using Moment = TrueShow::Moment;

constexpr Duration kOnce{};
constexpr Duration kOften = milliseconds(50);
/// A reaction to what was just heard.
constexpr Duration kDelay = milliseconds(20);
constexpr double kLatest = 1e6;

}  // namespace

/// What an attacker knows as it sends its k-th packet.
struct RogueSight {
  const TrueShow& show;
  /// What is on the air.
  const Moment& now;
  Duration time{};
  Duration begin{};
  std::uint64_t k = 0;
};

namespace {

Data dataOf(const Broadcast& broadcast) {
  const BroadcastBytes bytes = encodeBroadcast(broadcast);
  return {bytes.begin(), bytes.end()};
}

// A white strobe of screen and torch, so many numbers ahead of the show, under the show's own name.
Broadcast strobe(const RogueSight& sight, int ahead) {
  Broadcast look = sight.now.fields;
  look.sequence = static_cast<std::uint16_t>(look.sequence + ahead);
  look.pixelMapId = 0;
  look.master = look.red = look.green = look.blue = 255;
  look.mode = look.ledMode = 5;
  look.speed = look.ledSpeed = 255;
  look.paletteId = look.gobo = 0;
  return look;
}

int sofar(const RogueSight& sight) { return static_cast<int>(sight.k); }

Data farPacket(const RogueSight& sight) { return dataOf(strobe(sight, 20'000)); }
Data farStream(const RogueSight& sight) { return dataOf(strobe(sight, 20'000 + sofar(sight))); }
Data nextPacket(const RogueSight& sight) { return dataOf(strobe(sight, 1)); }
Data aheadStream(const RogueSight& sight) { return dataOf(strobe(sight, 200)); }
Data twin(const RogueSight& sight) { return dataOf(strobe(sight, 0)); }

// The true look, so that nobody sees what goes on, under numbers that the show takes long to reach.
// Begun before the show, it holds whatever is heard first.
Data freeze(const RogueSight& sight) {
  const Moment* const then = sight.show.at(sight.begin);
  Broadcast look = (then != nullptr ? *then : sight.now).fields;
  look.sequence = static_cast<std::uint16_t>(look.sequence + 1000 + sofar(sight));
  return dataOf(look);
}

Data replay(const RogueSight& sight) {
  const Moment* const then = sight.show.at(sight.time - milliseconds(5000));
  return then != nullptr ? then->data : Data{};
}

// From the beginning of the show, recorded then.
Data oldShow(const RogueSight& sight) {
  const Moment* const then = sight.show.at(milliseconds(2000) + kOften * sight.k);
  return then != nullptr ? then->data : Data{};
}

Data stranger(const RogueSight& sight) {
  Broadcast look = strobe(sight, 1 + sofar(sight));
  look.applicationId ^= 0x0F0F;
  return dataOf(look);
}

Data otherVenue(const RogueSight& sight) {
  Broadcast look = strobe(sight, 1 + sofar(sight));
  look.venueId ^= 1;
  return dataOf(look);
}

Data unknownTransmitter(const RogueSight& sight) {
  Broadcast look = strobe(sight, 100 + sofar(sight));
  look.transmitter ^= 0x55;
  return dataOf(look);
}

// A venue-wide transmitter is obeyed only while no other is near, whosever that is.
Data silencer(const RogueSight& sight) {
  Broadcast look = sight.now.fields;
  look.applicationId ^= 0x0F0F;
  look.transmitter = look.transmitter == kVenueWideTransmitter ? 1 : look.transmitter;
  look.sequence = static_cast<std::uint16_t>(1 + sight.k);
  return dataOf(look);
}

Data blackout(const RogueSight& sight) {
  Broadcast look = sight.now.fields;
  look.sequence = static_cast<std::uint16_t>(look.sequence + 1 + sofar(sight));
  look.mode = look.ledMode = look.master = 0;
  return dataOf(look);
}

// Each packet another touch, another speed and so another call of the host.
Data shaker(const RogueSight& sight) {
  Broadcast look = sight.now.fields;
  look.sequence = static_cast<std::uint16_t>(look.sequence + 1 + sofar(sight));
  look.vibrate = static_cast<std::uint8_t>(1 + sight.k % 3);
  look.speed = static_cast<std::uint8_t>(sight.k % 2);
  return dataOf(look);
}

Data badTag(const RogueSight& sight) {
  Data data = dataOf(strobe(sight, 1 + sofar(sight) % 1000));
  const std::uint64_t chance = mixed(1, sight.k, 0x5461);
  for (std::size_t at = 0; at < kTagSize; ++at) {
    data.insert(data.end() - 1, static_cast<std::uint8_t>(chance >> 8 * at & 0xFF));
  }
  return data;
}

}  // namespace

struct RogueRow {
  std::string_view kind;
  std::string_view does;
  /// Between its packets; zero for a single one.
  Duration pause;
  Data (*craft)(const RogueSight& sight);
};

namespace {

constexpr std::array<RogueRow, 15> kRogues = {{
    {"far-packet", "one strobe, 20,000 numbers ahead", kOnce, farPacket},
    {"far-stream", "a strobe 20,000 numbers ahead that goes on", kOften, farStream},
    {"next-packet", "one strobe under the show's next number", kOnce, nextPacket},
    {"ahead", "a strobe 200 numbers ahead of the show, all the time", kOften, aheadStream},
    {"twin", "a strobe under the show's own numbers", kOften, twin},
    {"freeze", "the true look, 1,000 numbers ahead, so that nothing follows it", kOften, freeze},
    {"replay", "the show of five seconds ago", kOften, replay},
    {"old-show", "the beginning of the show, recorded then", kOften, oldShow},
    {"stranger", "a strobe of another application", kOften, stranger},
    {"other-venue", "a strobe of another venue", kOften, otherVenue},
    {"unknown", "a strobe of a transmitter that nobody knows, 100 numbers ahead", kOften,
     unknownTransmitter},
    {"silencer", "a stranger's transmitter beside a venue-wide one", kOften, silencer},
    {"blackout", "the end of the show, a number ahead", kOften, blackout},
    {"shaker", "touches and changes of speed, a number ahead", milliseconds(20), shaker},
    {"bad-tags", "strobes with tags made up, a thousand a second", milliseconds(1), badTag},
}};

}  // namespace

std::optional<Rogue> rogueOf(const std::string& text) {
  const std::size_t at = text.find('@');
  if (at == std::string::npos) return std::nullopt;
  const auto seconds = plainNumber(text.substr(at + 1));
  const auto row =
      std::ranges::find(kRogues, std::string_view(text).substr(0, at), &RogueRow::kind);
  if (row == kRogues.end() || !seconds || *seconds < 0 || *seconds > kLatest) return std::nullopt;
  return Rogue{&*row, fromSeconds(*seconds)};
}

std::vector<RogueKind> rogueKinds() {
  std::vector<RogueKind> kinds;
  kinds.reserve(std::size(kRogues));
  for (const RogueRow& row : kRogues) kinds.push_back({row.kind, row.does});
  return kinds;
}

std::string_view kindOf(const Rogue& rogue) { return rogue.row->kind; }

Scenario withRogues(const Scenario& scenario, const TrueShow& show, std::span<const Rogue> rogues) {
  Scenario made = scenario;
  for (const Rogue& rogue : rogues) {
    const RogueRow& row = *rogue.row;
    std::uint64_t k = 0;
    Duration time = rogue.at + kDelay;
    do {
      const Moment* const now = show.at(time);
      Data data = now != nullptr ? row.craft({show, *now, time, rogue.at, k}) : Data{};
      if (!data.empty()) {
        ScenarioLine line;
        line.action = PacketAction{std::move(data)};
        line.at = toSeconds(time);
        made.lines.push_back(std::move(line));
      }
      ++k;
      time += row.pause;
    } while (row.pause > Duration::zero() && time < rogue.at + Rogue::kLength);
  }
  std::ranges::stable_sort(made.lines, {}, &ScenarioLine::at);
  return made;
}

}  // namespace halvora
