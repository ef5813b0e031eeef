// SPDX-License-Identifier: Apache-2.0
// What an engine believes of the air. Anybody with a radio can send packets; how much one of them
// may do is the host's choice. Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "halvora/platform/message_codes.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Which untagged packets are obeyed.
enum class AirPolicy : std::uint8_t {
  /// Whatever is newer than the last.
  exact,
  /// What goes on from what was heard: one show at a time, one transmitter's word against another's
  /// weighed, and nothing that comes too fast for a show.
  guarded,
};

/// What a show's key is for.
enum class Authentication : std::uint8_t {
  /// Nothing: tags are not looked at.
  off,
  /// Once a tag was good, what has none is ignored for ten seconds.
  prefer,
  /// Only what has a good tag is obeyed.
  require,
};

/// What a host wants believed; as it stands, everything that is newer.
struct AirOptions {
  /// Of packets without a good tag.
  AirPolicy policy = AirPolicy::exact;
  /// For `guarded`: the show that the phone is here for. What is not given is learnt from what is
  /// heard first and goes on undisputed.
  std::optional<std::uint16_t> applicationId = std::nullopt;
  std::optional<std::uint8_t> venueId = std::nullopt;  ///< Likewise.
  /// What `showKey` is for.
  Authentication authentication = Authentication::off;
  /// Without one, or without the platform's `codes`, no tag is ever good. The minute that tags are
  /// for is the wall clock's, give or take one.
  std::optional<ShowKey> showKey = std::nullopt;
};

/// How far what is obeyed can be believed.
enum class AirTrust : std::uint8_t {
  /// Nothing is heard, or only what nobody vouches for yet.
  unproven,
  /// A tag was good, or one show has been heard for three seconds and nothing disputes it.
  trusted,
  /// Two transmitters that cannot both be the show's say different things. Its look is held, and
  /// the torch is off.
  contested,
};

/// Why a packet was not obeyed that another policy might have obeyed.
enum class AirDoubt : std::uint8_t {
  /// Another application or venue than the show's.
  otherShow,
  /// A sequence number that does not go on from what was heard, while that is still heard; or a
  /// transmitter that has not been heard with the show yet.
  outOfStep,
  /// It came while two transmitters contested each other, and is of neither look that stands.
  contested,
  /// Another pixel map within a second.
  mapTooSoon,
  /// No tag, where a good one is wanted.
  untagged,
  /// A tag that is not the key's, or is of another minute.
  badTag,
  /// A good tag, but not newer than what was proven already.
  replayed,
  /// A good tag among very many bad ones, not confirmed yet.
  unconfirmed,
};
/// How many reasons there are.
inline constexpr auto kAirDoubtCount = static_cast<std::size_t>(AirDoubt::unconfirmed) + 1;

/// How many packets were doubted for which reason since the engine was made or its air was set, and
/// what was held back.
struct AirDiagnostics {
  /// Packets, by the reason's number.
  std::array<std::uint64_t, kAirDoubtCount> doubts{};
  /// Good tags, whatever became of their packets.
  std::uint64_t goodTags = 0;
  /// How often the show was contested.
  std::uint64_t contests = 0;
  /// Touches of the haptics beyond two a second.
  std::uint64_t hapticsHeldBack = 0;
  /// Packets that were doubted for that reason.
  std::uint64_t operator[](AirDoubt doubt) const { return doubts[static_cast<std::size_t>(doubt)]; }
};

}  // namespace v0
}  // namespace halvora
