// SPDX-License-Identifier: Apache-2.0
// What an engine has heard, and what became of it, in numbers. Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// What became of an advertisement.
enum class PacketFate : std::uint8_t {
  /// It carries none of the bytes that a packet lies in.
  noManufacturerData,
  /// The data begins with another company's id than a show's.
  otherMaker,
  /// A show's id, and fewer bytes behind it than a packet has.
  tooShort,
  /// From a transmitter that the host does not want obeyed.
  notAllowed,
  /// From the venue-wide transmitter while another one is near.
  silenced,
  /// A sequence number that is not newer than the last: a repeat, as a rule.
  staleSequence,
  /// A new sequence number with the look that is already shown.
  sameBroadcast,
  /// Application 0, which is nobody's.
  noApplication,
  /// A synchronisation flag that is neither 0 nor 2.
  badSyncFlag,
  /// A new look, which has gone through all of its steps.
  processed,
  /// Cut short half way, for want of memory as a rule. What was done of the look stays; while it is
  /// heard it is tried again, once a second.
  failed,
  /// Not believed: the host's policy for the air has a doubt, which `AirDiagnostics` names.
  doubted,
  /// The host destroyed the engine while it was told of the look. Nobody is left to count it.
  engineGone,
};
/// Of those that are counted.
inline constexpr auto kPacketFateCount = static_cast<std::size_t>(PacketFate::engineGone);

/// How many advertisements met each fate since the engine was made; a host may read it at any time.
struct ScanDiagnostics {
  /// Advertisements, by the fate's number.
  std::array<std::uint64_t, kPacketFateCount> counts{};
  /// Other calls of the system that were cut short: the radio's state, the application's. What a
  /// timer began is counted by the run loop.
  std::uint64_t failedCalls = 0;
  /// Calls of the host's two callbacks that ended by an exception, which went no further.
  std::uint64_t failedCallbacks = 0;
  /// Advertisements that met that fate.
  std::uint64_t operator[](PacketFate fate) const { return counts[static_cast<std::size_t>(fate)]; }
};

}  // namespace v0
}  // namespace halvora
