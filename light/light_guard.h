// SPDX-License-Identifier: Apache-2.0
// Stands where a show leaves the phone: before the screen's picture, its backlight, the torch and
// the motor. Without limits it hands everything on in the call that brings it. With limits it
// gathers what a turn wants, decides about all of it at once when the turn has ended, or when a
// face asks for a frame, and what the engine reads back is what it wanted, so that the show takes
// the same course. Owned by the engine; main thread.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "halvora/platform/haptics.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/torch.h"
#include "halvora/safety.h"
#include "light/emission.h"
#include "light/flash_limiter.h"
#include "light/gobo_means.h"
#include "light/light_look.h"
#include "light/picture_means.h"
#include "light/timer_set.h"
#include "light/view_stack.h"

namespace halvora {

class LightGuard final : private LightFilter {
 public:
  /// How long the light takes to go when its viewer leaves, and to come back.
  static constexpr Duration kLeaving = milliseconds(300);
  /// For so long what a backlight has said of itself counts, unless the show has written to it.
  static constexpr Duration kLevelHolds = milliseconds(100);

  /// The platform must outlive it. `pictures`, which many engines may share, may be null.
  LightGuard(const Platform& platform, ViewStack& views, TimerSet& timers, PictureMeans* pictures);
  ~LightGuard() override;
  LightGuard(const LightGuard&) = delete;
  LightGuard& operator=(const LightGuard&) = delete;

  // What the engine uses in place of the platform's.
  Screen& screen() { return screen_; }
  Torch& torch() { return torch_; }
  Haptics& haptics() { return haptics_; }

  const LightLimits& limits() const { return limits_; }
  void setLimits(const LightLimits& limits);

  /// The light fades out, the torch goes off and the backlight, where the show has changed it, has
  /// that level, whatever the show does, until `comeBack`.
  void leave(double backlight);
  void comeBack();
  bool hasLeft() const { return hasLeft_; }

  /// The application is in the background: the backlight has that level and the torch is off until
  /// it is back. Without the flash limit nothing happens.
  void goAway(double backlight);
  void returnToApplication();
  /// The show will not come back: what it has changed is as it was.
  void end(double backlight);

  /// The mean of what is on the screen now.
  Levels shownScreen();

 private:
  class GuardedScreen final : public Screen {
   public:
    GuardedScreen(LightGuard& guard, Screen& device) : guard_(guard), device_(device) {}
    Size bounds() const override { return device_.bounds(); }
    double brightness() const override;
    void setBrightness(double level) override;
    float currentEDRHeadroom() const override { return device_.currentEDRHeadroom(); }

   private:
    LightGuard& guard_;
    Screen& device_;
  };
  class GuardedTorch final : public Torch {
   public:
    GuardedTorch(LightGuard& guard, Torch& device) : guard_(guard), device_(device) {}
    bool hasTorch() const override { return device_.hasTorch(); }
    bool hasFlash() const override { return device_.hasFlash(); }
    void setOn(bool on) override;

   private:
    LightGuard& guard_;
    Torch& device_;
  };
  class GuardedHaptics final : public Haptics {
   public:
    GuardedHaptics(LightGuard& guard, Haptics& device) : guard_(guard), device_(device) {}
    void impact(ImpactStyle style) override;
    void playSystemSound(std::uint32_t sound) override;
    void disposeSystemSound(std::uint32_t sound) override { device_.disposeSystemSound(sound); }

   private:
    LightGuard& guard_;
    Haptics& device_;
  };

  LightLook lookInto(Size container) override;
  bool isMoving() const override;
  bool isGuarding() const { return guards_; }
  void rewire();
  void decideSoon();
  void decideNow();
  LightLook decide();
  void keepWantedBacklight();
  bool isGone() const { return isAway_ || hasLeft_; }
  bool owesBacklight() const;
  void giveBackBacklight();
  double gate() const;
  void moveGate(bool open);
  void rewireOnceBack();
  bool isKnown(const LightLook& look);
  Levels meanOf(const LightLook& look);
  LightLook wantedLook();
  Emission wanted(const LightLook& look);
  void send(const ShownLight& shown, const Emission& wanted);
  void writeBacklight(double level);
  void retryAfter(std::optional<Duration> pause);
  GoboMeans& ownPictures();
  double recentLevel();

  /// Of a backlight that was asked at that time.
  struct Level {
    double level;
    Duration time;
  };

  /// The limiter, and the look that it let through last.
  struct Limiting {
    Limiting(const Emission& present, LightLook shown)
        : limiter(present), lastShown(std::move(shown)) {}
    FlashLimiter limiter;
    LightLook lastShown;
  };

  Screen& device_;
  Torch& lamp_;
  const Platform& platform_;
  ViewStack& views_;
  TimerSet& timers_;
  GuardedScreen screen_;
  GuardedTorch torch_;
  GuardedHaptics haptics_;
  PictureMeans* sharedPictures_;
  /// Made when it is first needed.
  std::unique_ptr<GoboMeans> ownPictures_;
  LightLimits limits_;
  /// Null without the flash limit.
  std::unique_ptr<Limiting> limiting_;
  std::optional<Size> container_;
  /// What the engine wrote last, while the device may have something else.
  std::optional<double> wantedBacklight_;
  /// The engine's writes of the present turn.
  std::vector<double> writes_;
  bool wantsTorch_ = false;
  bool isTorchOn_ = false;
  bool guards_ = false;
  bool hasLeft_ = false;
  bool isAway_ = false;
  /// What the backlight is given back to when the show's viewer goes.
  double awayBacklight_ = 0;
  /// The level that the device got last from the show; none once it was given back.
  std::optional<double> ours_;
  /// None since the show has written.
  std::optional<Level> level_;
  /// The device does not take the levels that are written.
  bool isDeaf_ = false;
  Duration gateMoved_ = -kLeaving;
  TimerId soon_ = 0;
  TimerId retry_ = 0;
  TimerId back_ = 0;
};

}  // namespace halvora
