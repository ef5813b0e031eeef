// SPDX-License-Identifier: Apache-2.0
// When each cue of a show comes where nobody presses GO, and the packets of the whole show with
// their times: what rehearsals, counts and compiled shows are made of. Values, any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "venue/show/cue_list.h"
#include "venue/show/palette_names.h"

namespace halvora {

/// A cue that waits for GO comes so long after the one before, which has no hold of its own.
inline constexpr Duration kUsualHold = milliseconds(5000);
inline constexpr std::size_t kMostShowPackets = 2'000'000;

struct CuePlace {
  Duration begin{};
  /// When its look goes off the air; not before the next cue where that has the same transmitter.
  Duration end{};
};

/// One a cue. Cues without a time come when the one before has been held, and never after the next
/// one that has a time.
std::vector<CuePlace> placesOf(const CueList& show);

struct ShowPacket {
  Duration begin{};
  /// Repeated until half a repeat before it.
  Duration end{};
  Broadcast packet;
  /// Of the show's cues.
  std::size_t cue = 0;
};

/// All looks of the show in their order, numbered from `sequence` on; none where there are more
/// than `kMostShowPackets`. Numbers go on from 65535 with 1, as phones take it.
std::optional<std::vector<ShowPacket>> packetsOf(const CueList& show, std::uint16_t sequence);

/// The number after that one.
constexpr std::uint16_t nextSequence(std::uint16_t sequence) {
  return sequence == 0xFFFF ? std::uint16_t{1} : static_cast<std::uint16_t>(sequence + 1);
}

/// The frames of a map's video; none where that is not known, 0 where the venue has no such map.
using MapFrames = std::function<std::optional<int>(int venueId, int mapId)>;

/// Cues whose map goes on beyond its video, or is not there.
std::vector<CueListFlaw> flawsOfMaps(const CueList& show, const MapFrames& frames);

struct ShowCount {
  std::size_t packets = 0;
  /// Those and all their repeats.
  std::uint64_t transmissions = 0;
  Duration length{};
};
ShowCount countOf(const CueList& show, const std::vector<ShowPacket>& packets);

/// What is right and may not be meant so, a line each. `palettes` are those of the phones' assets,
/// null where they are not known.
std::vector<std::string> warningsOf(const CueList& show, const MapFrames& frames,
                                    const std::vector<NamedPalette>* palettes);

/// A scenario of a phone that starts at 0 and hears these packets.
std::string scenarioOf(const CueList& show, const std::vector<ShowPacket>& packets);

}  // namespace halvora
