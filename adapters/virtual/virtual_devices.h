// SPDX-License-Identifier: Apache-2.0
// The small parts of a virtual phone: screen, haptics, application, network, clocks and chance.
// Each keeps a log of what was done to it. Single-threaded.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "adapters/standard/application_observers.h"
#include "adapters/virtual/log.h"
#include "halvora/platform/application.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/http.h"
#include "halvora/platform/random.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/wall_clock.h"

namespace halvora {

class VirtualRunLoop;

class VirtualScreen final : public Screen {
 public:
  VirtualScreen(Size bounds, double brightness) : size(bounds), level_(brightness) {}
  Size bounds() const override { return size; }
  double brightness() const override { return level_; }
  void setBrightness(double level) override;
  float currentEDRHeadroom() const override {
    ++headroomReads;
    return 1;
  }

  Size size;
  /// The levels written, as they took effect.
  Log<double> log;
  mutable std::uint64_t headroomReads = 0;

 private:
  double level_;
};

enum class HapticAct : std::uint8_t { lightImpact, heavyImpact, sound, dispose };

class VirtualHaptics final : public Haptics {
 public:
  void impact(ImpactStyle style) override;
  void playSystemSound(std::uint32_t sound) override;
  void disposeSystemSound(std::uint32_t sound) override;

  /// Which of the two sound acts named another sound than the vibration is not kept: there is no
  /// other.
  Log<HapticAct> log;
};

class VirtualApplication final : public Application {
 public:
  void addObserver(ApplicationObserver& observer) override { observers_.add(observer); }
  void removeObserver(ApplicationObserver& observer) override { observers_.remove(observer); }
  void setIdleTimerDisabled(bool disabled) override { isIdleTimerDisabled = disabled; }
  void setStatusBarHidden(bool hidden) override { isStatusBarHidden = hidden; }
  void dismissPresentedScreens() override;
  bool canOpenSettings() const override { return hasSettings; }
  void openSettings() override { ++settingsOpened; }
  void useAudioPlaybackCategory() override { usesAudioPlayback = true; }

  void becomeActive();
  void resignActive();
  void changeOrientation();

  bool isIdleTimerDisabled = false;
  bool isStatusBarHidden = false;
  bool usesAudioPlayback = false;
  int dismissals = 0;
  bool hasSettings = true;
  int settingsOpened = 0;

 private:
  ApplicationObservers observers_;
};

class VirtualHttp final : public HttpClient {
 public:
  void get(const std::string& url) override { log.add(url); }
  Log<std::string> log;
};

/// Civil time that begins at a given date and goes on with the run loop.
class VirtualWallClock final : public WallClock {
 public:
  explicit VirtualWallClock(const RunLoop& loop) : loop_(loop) {}
  Date now() const override { return {begin.secondsSince1970 + toSeconds(loop_.now())}; }

  /// Noon of the first day of 2026, universal time.
  Date begin{1767268800};

 private:
  const RunLoop& loop_;
};

/// The Gregorian calendar in a fixed offset from universal time.
class VirtualCalendar final : public Calendar {
 public:
  DayComponents componentsOf(Date date) const override;
  double offsetSeconds = 0;
};

/// Draws always the least, always the greatest, or what a list says (then the least).
class ScriptedRandom final : public Random {
 public:
  enum class Rule : std::uint8_t { least, greatest };
  explicit ScriptedRandom(Rule rule = Rule::least, std::vector<std::uint32_t> first = {})
      : rule_(rule), first_(std::move(first)) {}

  std::uint32_t below(std::uint32_t bound) override;

  /// The bounds that were asked for.
  Log<std::uint32_t> log;

 private:
  Rule rule_;
  std::vector<std::uint32_t> first_;
  std::size_t next_ = 0;
};

/// Serial queues whose tasks run when the turn that gave them ends. It must outlive them.
class VirtualQueues final : public SerialQueues {
 public:
  explicit VirtualQueues(VirtualRunLoop& loop) : loop_(loop) {}
  std::unique_ptr<SerialQueue> make(std::string_view label) override;

  /// The labels of the queues made.
  Log<std::string> log;

 private:
  VirtualRunLoop& loop_;
  /// Of the queues, each once.
  std::set<std::string, std::less<>> labels_;
};

}  // namespace halvora
