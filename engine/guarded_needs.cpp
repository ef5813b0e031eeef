// SPDX-License-Identifier: Apache-2.0
#include "engine/guarded_needs.h"

#include <algorithm>

namespace halvora {

namespace {

constexpr Duration kSecond = milliseconds(1000);

}  // namespace

bool BoundedHaptics::isDue() {
  if (!isBounded_) return true;
  const Duration now = loop_.now();
  if (last_[0] && now - *last_[0] < kSecond) {
    ++heldBack_;
    return false;
  }
  last_ = {last_[1], now};
  return true;
}

void BoundedHaptics::impact(ImpactStyle style) {
  if (isDue()) haptics_.impact(style);
}

void BoundedHaptics::playSystemSound(std::uint32_t sound) {
  if (isDue()) haptics_.playSystemSound(sound);
}

// What was written last may be the seat of a show that is over; it is not worth failing for.
JoinedDefaults::~JoinedDefaults() {
  try {
    if (!kept_.empty()) writeAll();
  } catch (...) {
    kept_.clear();
  }
}

const DefaultsValue* JoinedDefaults::find(std::string_view key) const {
  const auto kept = std::ranges::find(kept_, key, &Write::first);
  if (kept == kept_.end()) return defaults_.find(key);
  return kept->second ? &*kept->second : nullptr;
}

void JoinedDefaults::set(std::string_view key, DefaultsValue value) {
  if (!isBounded_) return defaults_.set(key, std::move(value));
  keep(key, std::optional<DefaultsValue>(std::move(value)));
}

void JoinedDefaults::remove(std::string_view key) {
  if (!isBounded_) return defaults_.remove(key);
  keep(key, std::nullopt);
}

// What is kept is written before anything newer goes past it. Where that fails nothing has changed,
// and it is still to be written at its time.
void JoinedDefaults::setBounded(bool isBounded) {
  if (!isBounded) {
    if (!kept_.empty()) writeAll();
    next_.invalidate();
  }
  isBounded_ = isBounded;
}

void JoinedDefaults::keep(std::string_view key, std::optional<DefaultsValue> value) {
  const auto kept = std::ranges::find(kept_, key, &Write::first);
  if (kept != kept_.end()) {
    kept->second = std::move(value);
  } else {
    kept_.emplace_back(key, std::move(value));
  }
}

void JoinedDefaults::synchronize() {
  if (!isBounded_) return defaults_.synchronize();
  if (kept_.empty() || next_.isValid()) return;
  const Duration now = loop_.now();
  const Duration due = lastWrite_ ? *lastWrite_ + kSecond : now;
  // Not within the turn, in which a look writes several times.
  auto write = [this] { writeAll(); };
  next_ = Timer(loop_, due <= now ? loop_.soon(write) : loop_.after(due - now, write));
}

void JoinedDefaults::writeAll() {
  lastWrite_ = loop_.now();
  for (const Write& write : kept_) {
    if (write.second) {
      defaults_.set(write.first, *write.second);
    } else {
      defaults_.remove(write.first);
    }
  }
  kept_.clear();
  defaults_.synchronize();
}

void HeldTorch::setOn(bool on) {
  isWanted_ = on;
  if (!isHeld_) torch_.setOn(on);
}

void HeldTorch::setHeld(bool isHeld) {
  if (isHeld == isHeld_) return;
  isHeld_ = isHeld;
  torch_.setOn(isWanted_ && !isHeld_);
}

GuardedNeeds::GuardedNeeds(const Platform& platform)
    : haptics(platform.haptics, platform.runLoop),
      defaults(platform.defaults, platform.runLoop),
      torch(platform.torch) {}

void GuardedNeeds::setBounded(bool isBounded) {
  // The one that may fail comes first.
  defaults.setBounded(isBounded);
  haptics.setBounded(isBounded);
  isBounded_ = isBounded;
}

Platform GuardedNeeds::platform(const Platform& platform) {
  Platform guarded = platform;
  guarded.haptics = haptics;
  guarded.defaults = defaults;
  guarded.torch = torch;
  return guarded;
}

}  // namespace halvora
