// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_haptics.h"

#include <utility>

namespace halvora {

/// A touch, as each way knows it.
struct HapticsRow {
  double amplitude;
  std::uint32_t milliseconds;
  /// The event that feels most like it in the feedback daemon's theme.
  const char* event;
};

namespace {

constexpr HapticsRow kLightTap{0.5, 15, "button-pressed"};
constexpr HapticsRow kHeavyTap{1.0, 40, "bell-terminal"};
constexpr HapticsRow kVibration{1.0, 400, "message-sent-instant"};

constexpr Duration kLongestTouch = milliseconds(2000);

constexpr BusObject kVibrations{"org.sigxcpu.Feedback", "/org/sigxcpu/Feedback",
                                "org.sigxcpu.Feedback.Haptic"};
constexpr BusObject kEvents{"org.sigxcpu.Feedback", "/org/sigxcpu/Feedback",
                            "org.sigxcpu.Feedback"};
constexpr BusObject kMotor{"com.lomiri.hfd", "/com/lomiri/hfd", "com.lomiri.hfd.Vibrator"};

}  // namespace

LinuxHaptics::LinuxHaptics(RunLoop& loop, Buses& buses, std::string application,
                           const HapticsSettings& settings)
    : loop_(loop), application_(std::move(application)), settings_(settings), buses_(buses) {}

void LinuxHaptics::impact(ImpactStyle style) {
  play(style == ImpactStyle::light ? &kLightTap : &kHeavyTap);
}

void LinuxHaptics::playSystemSound(std::uint32_t sound) {
  if (sound == kVibrationSound) play(&kVibration);
}

// A tap disposes of the vibration before it, too, and must itself go on.
void LinuxHaptics::disposeSystemSound(std::uint32_t sound) {
  if (sound != kVibrationSound) return;
  if (loop_.now() < vibratesUntil_) play(nullptr);
}

void LinuxHaptics::play(const HapticsRow* row) {
  const Duration now = loop_.now();
  if (now < silentUntil_) return;
  if (wanted_) ++diagnostics_.dropped;
  wanted_ = Touch{row, now};
  vibratesUntil_ = row == &kVibration ? now + milliseconds(row->milliseconds) : Duration{};
  if (!call_.isPending()) send();
}

bool LinuxHaptics::isLate(const Touch& touch) const {
  return loop_.now() - touch.askedAt > settings_.latest;
}

BusMessage LinuxHaptics::newCall(const Touch& touch) {
  const char* application = application_.c_str();
  const HapticsRow* row = touch.row;
  switch (static_cast<HapticsWay>(way_)) {
    case HapticsWay::vibration:
      if (row == nullptr)
        return buses_.session.newCall(kVibrations, "Vibrate", "sa(du)", application, 0);
      return buses_.session.newCall(kVibrations, "Vibrate", "sa(du)", application, 1,
                                    row->amplitude, row->milliseconds);
    case HapticsWay::event:
      if (row == nullptr) return buses_.session.newCall(kEvents, "EndFeedback", "u", event_);
      // The quiet profile is the one that is felt and not heard.
      return buses_.session.newCall(kEvents, "TriggerFeedback", "ssa{sv}i", application, row->event,
                                    1, "profile", "s", "quiet", -1);
    case HapticsWay::motor:
      // It cannot be stopped; what it does is short.
      if (row == nullptr) return {};
      return buses_.system.newCall(kMotor, "vibrate", "i", static_cast<int>(row->milliseconds));
  }
  return {};
}

void LinuxHaptics::send() {
  if (!wanted_) return;
  const Touch touch = *std::exchange(wanted_, {});
  if (isLate(touch)) {
    ++diagnostics_.dropped;
    return;
  }
  const auto done = [this, touch](sd_bus_message* reply) { answered(touch, reply); };
  if (!call_.send(busOf(static_cast<HapticsWay>(way_)), newCall(touch), kLongestTouch, done)) {
    refused(touch);
  }
}

void LinuxHaptics::answered(const Touch& touch, sd_bus_message* reply) {
  if (reply == nullptr) {
    wanted_.reset();
    ++diagnostics_.dropped;
    return;
  }
  if (isError(reply)) return refused(touch);
  refusals_ = 0;
  if (touch.row != nullptr) {
    ++diagnostics_.played;
    diagnostics_.way = static_cast<HapticsWay>(way_);
    event_ = 0;
    if (diagnostics_.way == HapticsWay::event) sd_bus_message_read(reply, "u", &event_);
  }
  send();
}

// The next way may know the touch; a newer one goes before it.
void LinuxHaptics::refused(const Touch& touch) {
  if (touch.row == nullptr) return send();
  way_ = (way_ + 1) % kHapticsWays;
  if (++refusals_ >= kHapticsWays) {
    refusals_ = 0;
    wanted_.reset();
    ++diagnostics_.dropped;
    silentUntil_ = loop_.now() + settings_.silence;
    return;
  }
  if (!wanted_) {
    wanted_ = touch;
  } else if (wanted_->row == nullptr) {
    // What it would have ended has not begun.
    wanted_.reset();
  }
  send();
}

}  // namespace halvora
