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

inline constexpr std::size_t kShortestBroadcast = 26;
/// The bytes before the sequence number: two packets with the same ones carry the same look.
inline constexpr std::size_t kBroadcastKeySize = 23;
inline constexpr std::size_t kSequenceOffset = 23;
/// The transmitter that serves a whole venue, obeyed while no other is near.
inline constexpr std::uint8_t kVenueWideTransmitter = 255;

/// The fields of a packet, as transmitted.
struct Broadcast {
  std::uint16_t applicationId = 0;
  std::uint8_t syncFlag = 0;
  std::uint8_t venueId = 0;
  std::uint8_t pixelMapId = 0;
  std::uint8_t master = 0;
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t mode = 0;
  std::uint8_t speed = 0;
  std::uint8_t ledMode = 0;
  std::uint8_t ledSpeed = 0;
  std::uint8_t videoId = 0;
  std::uint8_t minutes = 0;
  std::uint8_t seconds = 0;
  std::uint8_t hundredths = 0;
  std::uint8_t videoStatus = 0;
  std::uint8_t gobo = 0;
  std::uint8_t vibrate = 0;
  std::uint8_t paletteId = 0;
  std::uint16_t sequence = 0;
  std::uint8_t transmitter = 0;

  friend bool operator==(const Broadcast&, const Broadcast&) = default;
};

/// Which field of a packet: one of a byte, or one of two.
class BroadcastValue {
 public:
  constexpr BroadcastValue(std::uint8_t Broadcast::*byte)  // NOLINT(google-explicit-constructor)
      : byte_(byte) {}
  constexpr BroadcastValue(std::uint16_t Broadcast::*word)  // NOLINT(google-explicit-constructor)
      : word_(word) {}

  constexpr int bytes() const { return word_ != nullptr ? 2 : 1; }
  constexpr std::uint16_t largest() const { return word_ != nullptr ? 0xFFFF : 0xFF; }
  constexpr std::uint16_t of(const Broadcast& broadcast) const {
    return word_ != nullptr ? broadcast.*word_ : broadcast.*byte_;
  }
  /// Of what is larger than the field, the low bytes count.
  constexpr void set(Broadcast& broadcast, int value) const {
    if (word_ != nullptr) {
      broadcast.*word_ = static_cast<std::uint16_t>(value);
    } else {
      broadcast.*byte_ = static_cast<std::uint8_t>(value);
    }
  }

  friend constexpr bool operator==(const BroadcastValue&, const BroadcastValue&) = default;

 private:
  std::uint8_t Broadcast::*byte_ = nullptr;
  std::uint16_t Broadcast::*word_ = nullptr;
};

/// Where a field lies. The transmitter's byte is the last of the data, which in the shortest packet
/// is this offset.
struct BroadcastField {
  const char* name;
  std::uint8_t offset;
  BroadcastValue value;
};

inline constexpr std::array<BroadcastField, 22> kBroadcastFields = {{
    {"applicationId", 2, &Broadcast::applicationId},
    {"syncFlag", 4, &Broadcast::syncFlag},
    {"venueId", 5, &Broadcast::venueId},
    {"pixelMapId", 6, &Broadcast::pixelMapId},
    {"master", 7, &Broadcast::master},
    {"red", 8, &Broadcast::red},
    {"green", 9, &Broadcast::green},
    {"blue", 10, &Broadcast::blue},
    {"mode", 11, &Broadcast::mode},
    {"speed", 12, &Broadcast::speed},
    {"ledMode", 13, &Broadcast::ledMode},
    {"ledSpeed", 14, &Broadcast::ledSpeed},
    {"videoId", 15, &Broadcast::videoId},
    {"minutes", 16, &Broadcast::minutes},
    {"seconds", 17, &Broadcast::seconds},
    {"hundredths", 18, &Broadcast::hundredths},
    {"videoStatus", 19, &Broadcast::videoStatus},
    {"gobo", 20, &Broadcast::gobo},
    {"vibrate", 21, &Broadcast::vibrate},
    {"paletteId", 22, &Broadcast::paletteId},
    {"sequence", kSequenceOffset, &Broadcast::sequence},
    {"transmitter", 25, &Broadcast::transmitter},
}};

using BroadcastBytes = std::array<std::uint8_t, kShortestBroadcast>;
using BroadcastKeyBytes = std::array<std::uint8_t, kBroadcastKeySize>;

enum class BroadcastFormat : std::uint8_t { valid, otherMaker, tooShort };

/// Whether the data is a packet of ours; only a valid one may be decoded.
BroadcastFormat formatOf(std::span<const std::uint8_t> data);
/// The fields of data that is valid; two-byte fields have their high byte first.
Broadcast decodeBroadcast(std::span<const std::uint8_t> data);
/// The shortest packet with those fields.
BroadcastBytes encodeBroadcast(const Broadcast& broadcast);

/// Two upper-case hexadecimal digits a byte, nothing between them.
std::string NSDataToHex(std::span<const std::uint8_t> data);
/// "applicationId:transmitter", decimal: what a host lists as allowed.
std::string transmitterKey(std::uint16_t applicationId, std::uint8_t transmitter);
/// The show's position that a packet carries.
int cueMilliseconds(const Broadcast& broadcast);
/// The pixel-map frame that a packet carries, never 0; the seconds are its high byte.
int cueToken(const Broadcast& broadcast);

}  // namespace halvora
