// SPDX-License-Identifier: Apache-2.0
#include "venue/show/show_words.h"

#include "light/mode_tables.h"
#include "light/palettes.h"
#include "light/show_state.h"

namespace halvora {

namespace {

template <std::size_t kCount>
std::string nameOf(const std::array<const char*, kCount>& names, std::uint16_t number) {
  return number < kCount ? names[number] : "unknown";
}

std::string level(std::uint16_t value) { return std::to_string((value * 100 + 127) / 255) + " %"; }

std::string slowness(std::uint16_t speed) {
  return std::to_string(percentageSpeed(speed)) + " % slow";
}

std::string noneOr(const char* what, std::uint16_t number) {
  return number == 0 ? "none" : what + (" " + std::to_string(number));
}

using Meaning = std::string (*)(const Broadcast& packet);

struct MeaningRow {
  BroadcastValue value;
  Meaning meaning;
};

// The last mode is a phone's own answer to a pixel map.
static_assert(kModeNames.size() + 1 == kModes.size());
static_assert(kTorchModeNames.size() == kTorchModes.size());

constexpr MeaningRow kMeanings[] = {
    {&Broadcast::syncFlag,
     [](const Broadcast& packet) -> std::string {
       return packet.syncFlag == 0 ? "normal" : packet.syncFlag == 2 ? "cloud sync" : "refused";
     }},
    {&Broadcast::pixelMapId,
     [](const Broadcast& packet) { return noneOr("map", packet.pixelMapId); }},
    {&Broadcast::master, [](const Broadcast& packet) { return level(packet.master); }},
    {&Broadcast::red, [](const Broadcast& packet) { return level(packet.red); }},
    {&Broadcast::green, [](const Broadcast& packet) { return level(packet.green); }},
    {&Broadcast::blue, [](const Broadcast& packet) { return level(packet.blue); }},
    {&Broadcast::mode, [](const Broadcast& packet) { return nameOf(kModeNames, packet.mode); }},
    {&Broadcast::speed, [](const Broadcast& packet) { return slowness(packet.speed); }},
    {&Broadcast::ledMode,
     [](const Broadcast& packet) { return nameOf(kTorchModeNames, packet.ledMode); }},
    {&Broadcast::ledSpeed, [](const Broadcast& packet) { return slowness(packet.ledSpeed); }},
    {&Broadcast::videoId, [](const Broadcast&) -> std::string { return "reserved"; }},
    {&Broadcast::minutes, [](const Broadcast&) -> std::string { return "frame, low byte"; }},
    {&Broadcast::seconds, [](const Broadcast&) -> std::string { return "frame, high byte"; }},
    {&Broadcast::hundredths,
     [](const Broadcast& packet) {
       return "cue " + std::to_string(cueMilliseconds(packet)) + " ms";
     }},
    {&Broadcast::gobo, [](const Broadcast& packet) { return noneOr("picture", packet.gobo); }},
    {&Broadcast::vibrate,
     [](const Broadcast& packet) { return nameOf(kVibrationNames, packet.vibrate); }},
    {&Broadcast::paletteId,
     [](const Broadcast& packet) -> std::string {
       return namesPalette(packet.paletteId) ? "instead of RGB" : "colour is RGB";
     }},
    {&Broadcast::sequence, [](const Broadcast&) -> std::string { return "rises with each look"; }},
    {&Broadcast::transmitter,
     [](const Broadcast& packet) -> std::string {
       return packet.transmitter == kVenueWideTransmitter
                  ? "venue-wide"
                  : "key " + transmitterKey(packet.applicationId, packet.transmitter);
     }},
};

}  // namespace

std::string statusOf(bool isInsideVenue, std::uint32_t mode) {
  if (!isInsideVenue) return "hears no show";
  if (mode == 0) return "waits for the show";
  if (mode == kPixelMapMode) return "shows its seat's pixel";
  if (mode == kNoSeatMode) return "has no seat for the pixel map";
  const std::string number = "shows mode " + std::to_string(mode);
  return mode < kModeNames.size() ? number + ", " + kModeNames[mode] : number;
}

std::string meaningOf(const BroadcastField& field, const Broadcast& packet) {
  for (const MeaningRow& row : kMeanings) {
    if (row.value == field.value) return row.meaning(packet);
  }
  return {};
}

}  // namespace halvora
