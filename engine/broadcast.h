// SPDX-License-Identifier: Apache-2.0
// The packet that transmitters advertise: 26 bytes or more of manufacturer data, a whole look in
// each. One table of fields serves the engine, the command-line tool and every view of a packet.
// Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace halvora {

inline constexpr std::uint8_t kCompanyPrefix[2] = {0x09, 0xC9};
inline constexpr std::size_t kShortestBroadcast = 26;
/// The bytes before the sequence number: two packets with the same ones carry the same look.
inline constexpr std::size_t kBroadcastKeySize = 23;
inline constexpr std::size_t kSequenceOffset = 23;
/// The transmitter that serves a whole venue, obeyed while no other is near.
inline constexpr std::uint16_t kVenueWideTransmitter = 255;

/// The fields of a packet, as transmitted.
struct Broadcast {
  std::uint16_t applicationId = 0;
  std::uint16_t syncFlag = 0;
  std::uint16_t venueId = 0;
  std::uint16_t pixelMapId = 0;
  std::uint16_t master = 0;
  std::uint16_t red = 0;
  std::uint16_t green = 0;
  std::uint16_t blue = 0;
  std::uint16_t mode = 0;
  std::uint16_t speed = 0;
  std::uint16_t ledMode = 0;
  std::uint16_t ledSpeed = 0;
  std::uint16_t videoId = 0;
  std::uint16_t minutes = 0;
  std::uint16_t seconds = 0;
  std::uint16_t hundredths = 0;
  std::uint16_t videoStatus = 0;
  std::uint16_t gobo = 0;
  std::uint16_t vibrate = 0;
  std::uint16_t paletteId = 0;
  std::uint16_t sequence = 0;
  std::uint16_t transmitter = 0;

  friend bool operator==(const Broadcast&, const Broadcast&) = default;
};

/// Where a field lies. The transmitter's byte is the last of the data, which in the shortest packet
/// is this offset.
struct BroadcastField {
  const char* name;
  std::uint8_t offset;
  std::uint8_t bytes;
  std::uint16_t Broadcast::*value;
  constexpr std::uint16_t largest() const { return bytes == 2 ? 0xFFFF : 0xFF; }
};

inline constexpr std::array<BroadcastField, 22> kBroadcastFields = {{
    {"applicationId", 2, 2, &Broadcast::applicationId},
    {"syncFlag", 4, 1, &Broadcast::syncFlag},
    {"venueId", 5, 1, &Broadcast::venueId},
    {"pixelMapId", 6, 1, &Broadcast::pixelMapId},
    {"master", 7, 1, &Broadcast::master},
    {"red", 8, 1, &Broadcast::red},
    {"green", 9, 1, &Broadcast::green},
    {"blue", 10, 1, &Broadcast::blue},
    {"mode", 11, 1, &Broadcast::mode},
    {"speed", 12, 1, &Broadcast::speed},
    {"ledMode", 13, 1, &Broadcast::ledMode},
    {"ledSpeed", 14, 1, &Broadcast::ledSpeed},
    {"videoId", 15, 1, &Broadcast::videoId},
    {"minutes", 16, 1, &Broadcast::minutes},
    {"seconds", 17, 1, &Broadcast::seconds},
    {"hundredths", 18, 1, &Broadcast::hundredths},
    {"videoStatus", 19, 1, &Broadcast::videoStatus},
    {"gobo", 20, 1, &Broadcast::gobo},
    {"vibrate", 21, 1, &Broadcast::vibrate},
    {"paletteId", 22, 1, &Broadcast::paletteId},
    {"sequence", kSequenceOffset, 2, &Broadcast::sequence},
    {"transmitter", 25, 1, &Broadcast::transmitter},
}};

using BroadcastBytes = std::array<std::uint8_t, kShortestBroadcast>;
using BroadcastKeyBytes = std::array<std::uint8_t, kBroadcastKeySize>;

enum class BroadcastFormat : std::uint8_t { valid, otherMaker, tooShort };

/// Whether the data is a packet of ours; only a valid one may be decoded.
BroadcastFormat formatOf(std::span<const std::uint8_t> data);
/// The fields of data that is valid; two-byte fields have their high byte first.
Broadcast decodeBroadcast(std::span<const std::uint8_t> data);
/// The shortest packet with those fields; only the low byte of a one-byte field is sent.
BroadcastBytes encodeBroadcast(const Broadcast& broadcast);

/// Two upper-case hexadecimal digits a byte, nothing between them.
std::string NSDataToHex(std::span<const std::uint8_t> data);
/// "applicationId:transmitter", decimal: what a host lists as allowed.
std::string transmitterKey(std::uint16_t applicationId, std::uint16_t transmitter);
/// The show's position that a packet carries.
int cueMilliseconds(const Broadcast& broadcast);
/// The pixel-map frame that a packet carries, never 0; the seconds are its high byte.
int cueToken(const Broadcast& broadcast);

}  // namespace halvora
