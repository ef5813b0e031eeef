// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/delayed_proof.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

constexpr Duration kOneSecond = milliseconds(1000);
/// What is known of the show's time loses so much of what has passed since, because clocks differ:
/// a phone's that is fast must not take it for later than it is.
constexpr std::int64_t kDriftShare = 4096;
/// A packet that is older than so many intervals by now is not judged any more.
constexpr std::uint32_t kOldest = 16;

std::span<const std::uint8_t, kBroadcastKeySize> lookOf(std::span<const std::uint8_t> data) {
  return data.first<kBroadcastKeySize>();
}

}  // namespace

void DelayedProof::hear(std::span<const std::uint8_t> data, Duration now) {
  const auto frame = ChainFrame::in(data);
  if (!frame || frame->applicationId != applicationId_ || frame->interval <= interval_) return;
  if (!maySpend(frame->interval - interval_, now)) return;
  if (!isOfRow(*frame)) {
    ++counts_.falseKeys;
    return;
  }
  ++counts_.keys;
  key_ = frame->key;
  interval_ = frame->interval;
  learnTime(interval_, now);
  judge(now);
}

bool DelayedProof::maySpend(std::uint32_t steps, Duration now) {
  if (now - spentSince_ >= kOneSecond) {
    spentSince_ = now;
    spent_ = 0;
  }
  if (steps > kStepsASecond - spent_) return false;
  spent_ += steps;
  return true;
}

bool DelayedProof::isOfRow(const ChainFrame& frame) {
  ChainKey key = frame.key;
  for (std::uint32_t at = frame.interval; at > interval_; --at) {
    const auto before = keyBefore(key, codes_);
    if (!before) return false;
    key = *before;
  }
  return key == key_;
}

Duration DelayedProof::showTime(Duration now) const {
  return now + *ahead_ - (now - learnt_) / kDriftShare;
}

// A key is on the air in one interval only, some intervals after its own: it cannot be earlier.
void DelayedProof::learnTime(std::uint32_t disclosed, Duration now) {
  const Duration atLeast = kChainInterval * (disclosed + kChainDelay);
  if (ahead_ && atLeast <= showTime(now)) return;
  if (!ahead_ || atLeast > showTime(now) + kLeap) {
    held_ = {};
    senders_ = {};
  }
  ahead_ = atLeast - now;
  learnt_ = now;
}

// A packet of a transmitter is judged where it was heard; what the phone knew of the time then is
// less than an interval behind, so its key is that of the interval that it was reckoned in or the
// next. Neither was known to anybody.
void DelayedProof::judge(Duration now) {
  std::uint32_t first = interval_;
  for (Held& held : held_) {
    if (held.interval + kOldest < interval_) held = {};
    if (held.interval != 0) first = std::min(first, held.interval);
  }
  ChainKey key = key_;
  for (std::uint32_t at = interval_; at >= first; --at) {
    check(key, at);
    const auto before = keyBefore(key, codes_);
    if (!before) return;
    key = *before;
  }
  std::ranges::sort(held_, {}, &Held::order);
  for (Held& held : held_) {
    if (held.interval == 0) continue;
    if (!held.isGood && held.interval >= interval_) continue;
    conclude(std::exchange(held, {}), now);
  }
}

void DelayedProof::check(const ChainKey& key, std::uint32_t interval) {
  std::unique_ptr<MessageCode> code;
  for (Held& held : held_) {
    const bool isItsKey = held.interval == interval || held.interval + 1 == interval;
    if (held.interval == 0 || held.isGood || !isItsKey) continue;
    if (code == nullptr) code = codeOf(key, codes_);
    held.isGood = code != nullptr && isTagGood(held.packet, interval, *code);
  }
}

void DelayedProof::conclude(const Held& held, Duration now) {
  const std::uint8_t transmitter = held.packet.back();
  auto found = std::ranges::find_if(
      senders_, [&](const auto& one) { return one && one->transmitter == transmitter; });
  ++(held.isGood ? counts_.proven : counts_.forged);
  if (found == senders_.end()) {
    // A stranger must not take the room of who is proven.
    if (!held.isGood) return;
    found = std::ranges::find_if(senders_, [](const auto& one) { return !one; });
    if (found == senders_.end()) return;
    Sender sender;
    sender.transmitter = transmitter;
    *found = sender;
  }
  Sender& sender = **found;
  if (held.isGood) {
    sender.proven = now;
    std::ranges::copy(lookOf(held.packet), sender.look.begin());
  } else if (held.isNew) {
    // Who repeats the true look with a false tag changes nothing.
    sender.forged = now;
  }
}

void DelayedProof::hold(std::span<const std::uint8_t> data, bool isNew, Duration now) {
  const auto packet = signedBroadcastIn(data);
  if (!packet || !ahead_ || !isOurs(data)) return;
  const auto interval = static_cast<std::uint32_t>(showTime(now) / kChainInterval);
  const bool isThere = std::ranges::any_of(held_, [&](const Held& one) {
    return one.interval != 0 && std::ranges::equal(one.packet, *packet);
  });
  if (isThere || interval + 1 < interval_) return;
  Held& held = placeFor(interval);
  held = {};
  std::ranges::copy(*packet, held.packet.begin());
  held.interval = interval;
  held.order = ++order_;
  held.isNew = isNew;
}

// The first few of an interval, and its newest; of all intervals, the newest.
DelayedProof::Held& DelayedProof::placeFor(std::uint32_t interval) {
  const auto ofInterval = std::ranges::count(held_, interval, &Held::interval);
  if (static_cast<std::size_t>(ofInterval) < kHeldOfInterval) {
    return *std::ranges::min_element(held_, {}, &Held::order);
  }
  return *std::ranges::max_element(
      held_, {}, [interval](const Held& one) { return one.interval == interval ? one.order : 0; });
}

const DelayedProof::Sender* DelayedProof::senderOf(std::uint8_t transmitter) const {
  for (const auto& sender : senders_) {
    if (sender && sender->transmitter == transmitter) return &*sender;
  }
  return nullptr;
}

DelayedProof::Standing DelayedProof::standingOf(std::span<const std::uint8_t> data,
                                                Duration now) const {
  const Sender* const sender = senderOf(data.back());
  const bool isFresh = sender != nullptr && sender->proven && now - *sender->proven < kFresh;
  if (!isFresh || !isOurs(data)) return Standing::unproven;
  if (std::ranges::equal(lookOf(data), sender->look)) return Standing::proven;
  const bool isDisputed = sender->forged && now - *sender->forged < kDispute;
  const bool isVouched = signedBroadcastIn(data).has_value() && !isDisputed;
  return isVouched ? Standing::vouched : Standing::unproven;
}

}  // namespace halvora
