// SPDX-License-Identifier: Apache-2.0
// The air between a show's transmitters and a crowd: what is sent when, and which phone hears it.
// Whether a phone hears a packet follows from the seed, the phone and the packet alone, so that it
// is the same whoever asks, and in whatever order. Values; any thread once it is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/time.h"
#include "pixelmap/seat_lut.h"
#include "venue/show/scenario.h"

namespace halvora {

/// A transmitter that reaches only a part of the venue; one that is not listed reaches all of it.
struct TransmitterReach {
  std::uint16_t transmitter = 0;
  SeatPosition at;
  /// In the pixels of the venue's map.
  double radius = 0;
};

/// A transmitter that is heard in some sections only; one that is not listed is heard in all.
struct TransmitterZone {
  std::uint16_t transmitter = 0;
  std::string section;
};

/// A transmitter that is off the air from a time on.
struct DeadTransmitter {
  std::uint16_t transmitter = 0;
  Duration from{};
};

struct AirSettings {
  /// The share of packets that a phone misses, 0 to 1.
  double loss = 0;
  /// A packet that is heard comes up to so much later.
  Duration jitter{};
  /// A transmitter sends its last packet again and again, so far apart; zero for never.
  Duration interval{};
  std::vector<TransmitterReach> reaches = {};
  std::vector<TransmitterZone> zones = {};
  std::vector<DeadTransmitter> dead = {};
  /// What controllers send: each transmitter its newest packet, so far apart, from its first one to
  /// the end; what is replaced in between is never on the air. Zero: all that the show sends.
  Duration controller{};
  std::uint64_t seed = 1;
};

/// One advertisement on the air.
struct Sent {
  Duration time{};
  /// Of `Air::packets`.
  std::uint32_t packet = 0;
  /// Counts the looks of the show, from 0: goes up by one whenever what is sent is a look that no
  /// other transmitter shows at that time.
  std::uint32_t look = 0;
};

/// A packet's bytes and what they say.
struct AirPacket {
  /// Among what happens at one time.
  std::uint64_t order = 0;
  std::vector<std::uint8_t> data;
  /// None for data that is no packet of ours.
  std::optional<Broadcast> broadcast;
};

class Air {
 public:
  /// A show that sends more is refused.
  static constexpr std::size_t kMostSent = 5'000'000;

  /// None for a show that sends too much. Repeats of an interval end at `end`.
  static std::optional<Air> of(const Scenario& scenario, const AirSettings& settings, Duration end);

  /// In the order of their times.
  std::span<const Sent> sent() const { return sent_; }
  const AirPacket& packet(const Sent& sent) const { return packets_[sent.packet]; }
  /// When each look came on the air.
  std::span<const Duration> looks() const { return looks_; }
  /// When the show's packets are sent while no transmitter is dead, in order.
  std::span<const Duration> showTimes() const { return showTimes_; }
  Duration jitter() const { return settings_.jitter; }

  /// When a phone hears what was sent, if it does.
  std::optional<Duration> arrival(std::size_t sent, std::uint32_t phone, SeatPosition seat,
                                  std::string_view section = {}) const;

 private:
  explicit Air(AirSettings settings) : settings_(std::move(settings)) {}

  bool expand(const Scenario& scenario, Duration end);
  bool addRepeats(Duration end);
  bool sendAsControllersDo(Duration end);
  void silenceTheDead();
  void countLooks();
  bool isInReach(const AirPacket& packet, SeatPosition seat) const;
  bool isInZone(const AirPacket& packet, std::string_view section) const;

  AirSettings settings_;
  std::vector<AirPacket> packets_;
  std::vector<Sent> sent_;
  std::vector<Duration> looks_;
  std::vector<Duration> showTimes_;
};

/// Whether a packet with that chance, one of all 64-bit numbers, is among the share that is lost.
bool isLost(std::uint64_t chance, double loss);

/// A number that depends on all three, evenly spread.
std::uint64_t mixed(std::uint64_t seed, std::uint64_t one, std::uint64_t other);

}  // namespace halvora
