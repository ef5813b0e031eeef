// SPDX-License-Identifier: Apache-2.0
// The words for what a packet carries, on a desk and in a show that a person writes: names of the
// modes, and what a field's value means. Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/broadcast.h"

namespace halvora {

/// By number. The modes above these are a phone's own answer to a pixel map.
inline constexpr std::array<const char*, 21> kModeNames = {
    "Blackout",      "Steady",        "Scatter in", "Flash bulbs",    "Shimmer",
    "Strobe",        "Bursts",        "Toggle A",   "Toggle B",       "Packet rate",
    "Gobo fade",     "Gobo pulse",    "Gobo drift", "White sparkle",  "White pulse",
    "Palette bulbs", "Palette pulse", "Crossfade",  "Free crossfade", "Palette mix",
    "Palette steps"};

inline constexpr std::array<const char*, 10> kTorchModeNames = {
    "Off",    "On",     "Flick off", "Flick on", "Flash bulb",
    "Strobe", "Bursts", "Toggle A",  "Toggle B", "Pixel map"};

inline constexpr std::array<const char*, 4> kVibrationNames = {"None", "Light tap", "Heavy tap",
                                                               "Buzz"};

/// Gobos are pictures with numbers; only their absence has a name.
inline constexpr const char* kNoGoboName = "None";

/// What a phone does that is in a mode, as the rest of a sentence.
std::string statusOf(bool isInsideVenue, std::uint32_t mode);

/// What that field of the packet means to a phone; empty where the number says it all.
std::string meaningOf(const BroadcastField& field, const Broadcast& packet);

}  // namespace halvora
