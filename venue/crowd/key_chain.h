// SPDX-License-Identifier: Apache-2.0
// Proof for phones that hold no secret: a row of keys of which each follows from the next by a step
// that nobody can take back. A show signs what it sends in a second with that second's key, and
// discloses the key two seconds later, when nobody can use it any more. Who knows the row's
// beginning, which is no secret, can tell whether a disclosed key is of the row. An experiment of
// simulated crowds: neither engine nor transmitters know of it. Values; one thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "halvora/platform/message_codes.h"
#include "halvora/platform/time.h"
#include "venue/show/scenario.h"

namespace halvora {

using ChainKey = std::array<std::uint8_t, ShowKey::kSize>;

/// How long a key signs.
inline constexpr Duration kChainInterval = milliseconds(1000);
/// So many intervals after its own a key is disclosed, for as long as one.
inline constexpr std::uint32_t kChainDelay = 2;
/// More than eighteen hours.
inline constexpr std::uint32_t kLongestChain = 65'536;

/// A disclosed key on the air: 25 bytes, one less than the shortest packet, so that a phone that
/// knows nothing of it passes it over.
struct ChainFrame {
  static constexpr std::size_t kSize = 25;
  /// Where a packet has its sync flag, which never has this value.
  static constexpr std::uint8_t kMark = 0xCA;

  std::uint16_t applicationId = 0;
  /// Of the row, the beginning being 0; 24 bits.
  std::uint32_t interval = 0;
  ChainKey key{};
  std::uint8_t transmitter = 0;

  std::array<std::uint8_t, kSize> bytes() const;
  /// None for data that is no such frame.
  static std::optional<ChainFrame> in(std::span<const std::uint8_t> data);
  friend bool operator==(const ChainFrame&, const ChainFrame&) = default;
};

/// The key before that one; none where there is no cipher.
std::optional<ChainKey> keyBefore(const ChainKey& key, const MessageCodes& codes);
/// What signs with that key; null where there is no cipher.
std::unique_ptr<MessageCode> codeOf(const ChainKey& key, const MessageCodes& codes);

/// All keys of a show, for whoever sends it.
class KeyChain {
 public:
  /// A row for so many intervals, from the secret that is its end. None where there is no cipher,
  /// or for more than the longest.
  static std::optional<KeyChain> of(const ChainKey& secret, std::uint32_t intervals,
                                    const MessageCodes& codes);

  /// The beginning: what applications are given.
  const ChainKey& anchor() const { return keys_.front(); }
  /// The secret of an interval, from 1.
  const ChainKey& at(std::uint32_t interval) const { return keys_.at(interval); }
  /// The interval of a time of the show.
  static std::uint32_t intervalAt(Duration time) {
    return static_cast<std::uint32_t>(time / kChainInterval) + 1;
  }

 private:
  explicit KeyChain(std::vector<ChainKey> keys) : keys_(std::move(keys)) {}

  std::vector<ChainKey> keys_;
};

/// The scenario as its transmitters would send it with that row, up to `end`: packets signed for
/// their interval, and three or four times a second, in place of a repeat where there is one, the
/// newest disclosed key. No more is sent than before. The row must reach to the end. None where
/// there is no cipher.
std::optional<Scenario> chainedShow(const Scenario& scenario, const KeyChain& chain,
                                    const MessageCodes& codes, Duration end);

}  // namespace halvora
