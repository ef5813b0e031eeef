// SPDX-License-Identifier: Apache-2.0
#include "venue/show/cue_schedule.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "pixelmap/frame_time.h"
#include "venue/base/json_line.h"
#include "venue/show/cue_steps.h"
#include "venue/show/cue_values.h"

namespace halvora {

namespace {

std::string cueText(const Cue& cue) { return "cue \"" + cue.name + "\""; }

bool hasSameSender(const Cue& one, const Cue& other) {
  return one.look.packet.transmitter == other.look.packet.transmitter;
}

/// The next cue with a time of its own.
const Cue* nextTimed(const CueList& show, std::size_t from) {
  for (std::size_t at = from; at < show.cues.size(); ++at) {
    if (show.cues[at].at) return &show.cues[at];
  }
  return nullptr;
}

/// The last frame of a map that its cue sends, and none for a cue without a map.
std::optional<std::int64_t> lastFrameOf(const Cue& cue, const CuePlace& place) {
  const auto& map = cue.look.map;
  if (!map) return std::nullopt;
  const double packets = toSeconds(place.end - place.begin) * map->rate;
  auto k = static_cast<std::int64_t>(std::ceil(packets));
  while (k > 0 && CueSteps::mapTime(*map, k) >= place.end - place.begin) --k;
  return CueSteps::mapFrame(*map, k);
}

}  // namespace

std::vector<CuePlace> placesOf(const CueList& show) {
  std::vector<CuePlace> places;
  places.reserve(show.cues.size());
  const Cue* timed = nullptr;
  std::size_t lookedAt = 0;
  for (std::size_t at = 0; at < show.cues.size(); ++at) {
    const Cue& cue = show.cues[at];
    CuePlace place;
    if (cue.at) {
      place.begin = *cue.at;
    } else if (at > 0) {
      if (lookedAt <= at) {
        timed = nextTimed(show, at);
        lookedAt = timed == nullptr ? show.cues.size()
                                    : static_cast<std::size_t>(timed - show.cues.data()) + 1;
      }
      const Cue& before = show.cues[at - 1];
      const Duration begin = places.back().begin;
      place.begin = begin + before.hold.value_or(kUsualHold);
      // Half of what is left, so that several share it and none is skipped.
      if (timed != nullptr && !before.hold) {
        const Duration half = (*timed->at - begin) / 2;
        place.begin = std::min(place.begin, begin + half / milliseconds(1) * milliseconds(1));
      }
      if (timed != nullptr) place.begin = std::min(place.begin, *timed->at);
    }
    places.push_back(place);
  }
  for (std::size_t at = 0; at < places.size(); ++at) {
    const Cue& cue = show.cues[at];
    const Duration held = places[at].begin + std::max(cue.fade, cue.hold.value_or(Duration{}));
    if (at + 1 == places.size()) {
      places[at].end = held;
    } else if (hasSameSender(cue, show.cues[at + 1])) {
      places[at].end = places[at + 1].begin;
    } else {
      places[at].end = std::max(held, places[at + 1].begin);
    }
  }
  return places;
}

std::optional<std::vector<ShowPacket>> packetsOf(const CueList& show, std::uint16_t sequence) {
  const std::vector<CuePlace> places = placesOf(show);
  std::vector<ShowPacket> packets;
  std::uint8_t master = 0;
  for (std::size_t at = 0; at < places.size(); ++at) {
    const Cue& cue = show.cues[at];
    const CuePlace& place = places[at];
    CueSteps steps(cue, show.repeat, master);
    const std::size_t first = packets.size();
    while (const auto step = steps.next()) {
      const Duration begin = place.begin + step->time;
      if (begin >= place.end && packets.size() > first) break;
      if (packets.size() > first) packets.back().end = begin;
      if (packets.size() == kMostShowPackets) return std::nullopt;
      packets.push_back({begin, std::max(begin, place.end), step->packet, at});
      packets.back().packet.sequence = sequence;
      sequence = nextSequence(sequence);
    }
    master = packets.back().packet.master;
  }
  return packets;
}

std::vector<CueListFlaw> flawsOfMaps(const CueList& show, const MapFrames& frames) {
  std::vector<CueListFlaw> flaws;
  const std::vector<CuePlace> places = placesOf(show);
  for (std::size_t at = 0; at < places.size(); ++at) {
    const Cue& cue = show.cues[at];
    const auto last = lastFrameOf(cue, places[at]);
    if (!last) continue;
    const std::string map = "map " + std::to_string(cue.look.map->id);
    const auto known = frames(show.sender.venueId, cue.look.map->id);
    if (known == 0) {
      flaws.push_back(
          {cue.line, cueText(cue),
           "venue " + std::to_string(show.sender.venueId) + " has no video for " + map});
    } else if (const int most = known.value_or(kMostPixelMapFrames); *last > most) {
      flaws.push_back({cue.line, cueText(cue),
                       map + " ends at frame " + std::to_string(most) +
                           ", and the cue would send frame " + std::to_string(*last) +
                           "; begin earlier in the map, or the next cue earlier"});
    }
  }
  return flaws;
}

ShowCount countOf(const CueList& show, const std::vector<ShowPacket>& packets) {
  ShowCount count;
  count.packets = packets.size();
  for (const ShowPacket& packet : packets) {
    const Duration last = packet.end - show.repeat / 2;
    count.transmissions += last > packet.begin
                               ? static_cast<std::uint64_t>((last - packet.begin) / show.repeat) + 1
                               : 1;
    count.length = std::max(count.length, packet.end);
  }
  return count;
}

namespace {

void warnOfSender(const CueList& show, std::vector<std::string>& warnings) {
  if (show.sender.applicationId == 0) {
    warnings.emplace_back("application is 0, which no phone obeys; give the application's number");
  }
  if (!show.cues.back().hold) {
    warnings.emplace_back(cueText(show.cues.back()) +
                          " is the last and has no hold: compiled, its packet is sent once");
  }
}

// Of a palette that they do not have phones show the packet's colour, which is black as a rule.
bool isMissing(std::uint8_t palette, const std::vector<NamedPalette>* palettes) {
  return palettes != nullptr && palette != 0 &&
         std::ranges::find(*palettes, std::int64_t{palette}, &NamedPalette::id) == palettes->end();
}

void warnOfCue(const CueList& show, std::size_t at, const std::vector<CuePlace>& places,
               const MapFrames& frames, const std::vector<NamedPalette>* palettes,
               std::vector<std::string>& warnings) {
  const Cue& cue = show.cues[at];
  const Broadcast& look = cue.look.packet;
  const auto warn = [&](const std::string& what) {
    warnings.push_back("line " + std::to_string(cue.line) + ": " + cueText(cue) + " " + what);
  };
  if (!cue.at) {
    warn("waits for GO; compiled, it comes at " + showTimeText(places[at].begin));
  }
  const bool hasColour = look.red != 0 || look.green != 0 || look.blue != 0;
  if (look.mode == 0 && (hasColour || look.paletteId != 0 || cue.look.map)) {
    warn("has colours and mode 0, which shows nothing");
  }
  if (cue.look.map && !frames(show.sender.venueId, cue.look.map->id)) {
    warn("plays map " + std::to_string(cue.look.map->id) +
         ", whose length is not known here; see --assets");
  }
  if (isMissing(look.paletteId, palettes)) {
    warn("has palette " + std::to_string(look.paletteId) +
         ", which the assets' palettes.json does not have; phones with these assets show the "
         "colour #" +
         NSDataToHex(std::array{look.red, look.green, look.blue}) + " instead");
  }
  if (at + 1 == show.cues.size()) return;
  const Duration length = places[at + 1].begin - places[at].begin;
  if (length == Duration{}) warn("has no time before the next cue");
  if (cue.fade > length) warn("has a fade that is longer than the cue");
  if (cue.hold && places[at].begin + *cue.hold > places[at].end) {
    warn("is to be held longer than the next cue lets it");
  }
}

}  // namespace

std::vector<std::string> warningsOf(const CueList& show, const MapFrames& frames,
                                    const std::vector<NamedPalette>* palettes) {
  std::vector<std::string> warnings;
  const std::vector<CuePlace> places = placesOf(show);
  warnOfSender(show, warnings);
  for (std::size_t at = 0; at < places.size(); ++at) {
    warnOfCue(show, at, places, frames, palettes, warnings);
  }
  return warnings;
}

std::string scenarioOf(const CueList& show, const std::vector<ShowPacket>& packets) {
  JsonLine line;
  std::string text(line.begin().addLevel("at", 0).add("start", true).end());
  for (const ShowPacket& sent : packets) {
    line.begin().addLevel("at", toSeconds(sent.begin));
    line.add("packet", NSDataToHex(encodeBroadcast(sent.packet)));
    if (sent.end - sent.begin > show.repeat) {
      // Half a repeat before the next look, so that no rounding decides about the last copy.
      line.addLevel("every", toSeconds(show.repeat));
      line.addLevel("until", toSeconds(sent.end - show.repeat / 2));
    }
    text += line.end();
  }
  return text;
}

}  // namespace halvora
