// SPDX-License-Identifier: Apache-2.0
// What a phone that knows only the beginning of a show's row of keys can tell of what it obeys: it
// keeps some of the packets of the last seconds, and judges them by the keys that are disclosed
// afterwards. It needs no clock but its own: each disclosed key says how late it is for the show at
// least. Whatever is sent, it takes the same room and a bounded time. Owned by a simulated phone;
// one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "engine/signed_broadcast.h"
#include "venue/crowd/key_chain.h"

namespace halvora {

class DelayedProof {
 public:
  /// How long what was proven is.
  static constexpr Duration kFresh = milliseconds(5000);
  /// How long a transmitter is believed no new look of, after one under its number was forged.
  static constexpr Duration kDispute = milliseconds(10'000);
  /// A disclosed key that says that it is later by more than this than was known ends all proof:
  /// the phone was told old ones, and others may have known the keys that it judged by.
  static constexpr Duration kLeap = kChainInterval;
  /// Steps along the row a second; no frame is worth more.
  static constexpr std::uint32_t kStepsASecond = kLongestChain;
  /// Packets that are kept, and of one interval.
  static constexpr std::size_t kHeld = 32;
  static constexpr std::size_t kHeldOfInterval = 6;
  static constexpr std::size_t kSenders = 4;

  /// How far a look can be believed.
  enum class Standing : std::uint8_t {
    unproven,
    /// Its transmitter was proven a moment ago, and nothing under its number was forged lately.
    vouched,
    /// A packet with this look was proven itself.
    proven,
  };

  DelayedProof(std::uint16_t applicationId, const ChainKey& anchor, const MessageCodes& codes)
      : applicationId_(applicationId), codes_(codes), key_(anchor) {}

  /// Any data of manufacturers'.
  void hear(std::span<const std::uint8_t> data, Duration now);
  /// A packet that the phone obeys, new or again, right after it was heard.
  void hold(std::span<const std::uint8_t> data, bool isNew, Duration now);
  /// Of a packet that the phone obeys.
  Standing standingOf(std::span<const std::uint8_t> data, Duration now) const;

  struct Counts {
    std::uint64_t keys = 0;
    /// Frames with a key that is not of the row.
    std::uint64_t falseKeys = 0;
    std::uint64_t proven = 0;
    std::uint64_t forged = 0;
  };
  const Counts& counts() const { return counts_; }

 private:
  /// A packet whose key is not known yet.
  struct Held {
    SignedBroadcastBytes packet{};
    /// The earliest that it can have been sent in, by what was known; 0 for an empty place.
    std::uint32_t interval = 0;
    std::uint64_t order = 0;
    bool isNew = false;
    bool isGood = false;
  };
  struct Sender {
    std::uint8_t transmitter = 0;
    std::optional<Duration> proven;
    BroadcastKeyBytes look{};
    std::optional<Duration> forged;
  };

  bool isOurs(std::span<const std::uint8_t> packet) const {
    return applicationId_ == (packet[2] << 8 | packet[3]);
  }
  bool maySpend(std::uint32_t steps, Duration now);
  bool isOfRow(const ChainFrame& frame);
  Duration showTime(Duration now) const;
  void learnTime(std::uint32_t disclosed, Duration now);
  void judge(Duration now);
  void check(const ChainKey& key, std::uint32_t interval);
  void conclude(const Held& held, Duration now);
  Held& placeFor(std::uint32_t interval);
  const Sender* senderOf(std::uint8_t transmitter) const;

  std::uint16_t applicationId_;
  const MessageCodes& codes_;
  /// The newest known, and its interval.
  ChainKey key_;
  std::uint32_t interval_ = 0;
  /// How far the show's time is ahead of the phone's at least, and when that was learnt.
  std::optional<Duration> ahead_;
  Duration learnt_{};
  std::uint32_t spent_ = 0;
  Duration spentSince_{};
  std::array<Held, kHeld> held_{};
  std::uint64_t order_ = 0;
  std::array<std::optional<Sender>, kSenders> senders_;
  Counts counts_;
};

}  // namespace halvora
