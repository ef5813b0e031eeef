// SPDX-License-Identifier: Apache-2.0
// The haptics need on Linux: the session's feedback daemon, by its vibrations where it has them and
// by its events where it has not, else the system's vibrator daemon. What has worked is asked
// first. Nothing queues: while a call is under way the newest touch waits, and one that comes too
// late to be felt with the light is dropped. The host owns it; main thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "adapters/linux/bus/bus.h"
#include "halvora/platform/haptics.h"

namespace halvora {

enum class HapticsWay : std::uint8_t { vibration, event, motor };
inline constexpr std::size_t kHapticsWays = 3;

struct HapticsSettings {
  /// A touch that would be felt later belongs to no light any more.
  Duration latest = milliseconds(300);
  /// Where nothing vibrates, so long nothing is asked.
  Duration silence = milliseconds(10'000);
};

struct HapticsDiagnostics {
  /// The way that the last touch went; none before the first.
  std::optional<HapticsWay> way;
  std::uint64_t played = 0;
  /// Touches that no way would take, or that came too late.
  std::uint64_t dropped = 0;
};

class LinuxHaptics final : public Haptics {
 public:
  /// `application` is who vibrates, such as "com.example.host": users may quieten applications.
  LinuxHaptics(RunLoop& loop, Buses& buses, std::string application,
               const HapticsSettings& settings = {});
  LinuxHaptics(const LinuxHaptics&) = delete;
  LinuxHaptics& operator=(const LinuxHaptics&) = delete;

  void impact(ImpactStyle style) override;
  void playSystemSound(std::uint32_t sound) override;
  /// Ends a vibration that still goes on, where the way knows how.
  void disposeSystemSound(std::uint32_t sound) override;

  const HapticsDiagnostics& diagnostics() const { return diagnostics_; }

 private:
  /// What is felt: a row of the table in the source; none ends a vibration.
  struct Touch {
    const struct HapticsRow* row;
    Duration askedAt;
  };

  void play(const HapticsRow* row);
  void send();
  void answered(const Touch& touch, sd_bus_message* reply);
  void refused(const Touch& touch);
  BusMessage newCall(const Touch& touch);
  Bus& busOf(HapticsWay way) { return way == HapticsWay::motor ? buses_.system : buses_.session; }
  bool isLate(const Touch& touch) const;

  RunLoop& loop_;
  const std::string application_;
  const HapticsSettings settings_;
  Buses& buses_;
  /// Index of the way that is asked, and how many of them have refused one after the other.
  std::size_t way_ = 0;
  std::size_t refusals_ = 0;
  /// No way was found; not looked for again until then.
  Duration silentUntil_{};
  std::optional<Touch> wanted_;
  /// Until when the last vibration goes on, and the event that it was, if it was one.
  Duration vibratesUntil_{};
  std::uint32_t event_ = 0;
  HapticsDiagnostics diagnostics_;
  BusCall call_;
};

}  // namespace halvora
