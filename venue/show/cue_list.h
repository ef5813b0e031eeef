// SPDX-License-Identifier: Apache-2.0
// A show as a person writes it: looks by name and cues in their order, by time or by GO. Read whole
// from YAML; a file with any fault gives all of its faults and no show. Values, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/time.h"
#include "venue/show/palette_names.h"

namespace halvora {

/// In bytes; a longer file is not read.
inline constexpr std::size_t kLargestCueList = std::size_t{8} << 20;
inline constexpr std::size_t kMostCues = 100'000;

/// A pixel map that plays while its cue stands.
struct CueMap {
  std::uint8_t id = 0;
  /// Its first frame, from 1.
  int from = 1;
  /// Packets a second; frames are skipped or shown twice so that the map keeps its own pace.
  double rate = 30;

  bool operator==(const CueMap&) const = default;
};

struct CueLook {
  /// Without its sequence number, and without the map's frame.
  Broadcast packet;
  std::optional<CueMap> map;

  bool operator==(const CueLook&) const = default;
};

struct Cue {
  std::string name;
  /// Of the file, from 1.
  std::size_t line = 0;
  /// None: it waits for GO.
  std::optional<Duration> at;
  /// How long it stands where nothing follows it by its own time.
  std::optional<Duration> hold;
  /// How long the master takes from what it was to the look's.
  Duration fade{};
  CueLook look;
};

struct CueList {
  /// From one repeat of a packet to the next.
  Duration repeat = milliseconds(100);
  /// What a packet of this show has besides its look.
  Broadcast sender;
  std::vector<Cue> cues;
};

struct CueListFlaw {
  std::size_t line = 0;
  /// What it is about, as `cue "Finale"`; empty for the file.
  std::string where;
  /// What is wrong, and what would be right.
  std::string what;
};

/// `file:line: cue "Finale": what is wrong`.
std::string textOf(const CueListFlaw& flaw, std::string_view file);

/// The show, or all that is wrong with it, by line. The palettes are those that may be named.
std::variant<CueList, std::vector<CueListFlaw>> parseCueList(
    std::string_view text, const std::vector<NamedPalette>& palettes);

/// The place of a cue by its name; none where there is none.
std::optional<std::size_t> cueNamed(const CueList& show, std::string_view name);

}  // namespace halvora
