// SPDX-License-Identifier: Apache-2.0
// The host application as the kit sees it: its life cycle, and the few global settings a show
// changes. Main thread.
#pragma once

namespace halvora {

class ApplicationObserver {
 public:
  virtual ~ApplicationObserver() = default;
  virtual void handleOrientationChange() = 0;
  virtual void appDidBecomeActive() = 0;
  virtual void appWillResignActive() = 0;
};

class Application {
 public:
  virtual ~Application() = default;
  virtual void addObserver(ApplicationObserver& observer) = 0;
  virtual void removeObserver(ApplicationObserver& observer) = 0;
  /// Keeps the screen from dimming and locking by itself.
  virtual void setIdleTimerDisabled(bool disabled) = 0;
  virtual void setStatusBarHidden(bool hidden) = 0;
  /// Dismisses, animated, whatever is presented over the host's root.
  virtual void dismissPresentedScreens() = 0;
  /// Sound plays even when the phone is silenced.
  virtual void useAudioPlaybackCategory() = 0;
};

}  // namespace halvora
