// SPDX-License-Identifier: Apache-2.0
// The host application as the kit sees it: its life cycle, and the few global settings a show
// changes. Main thread.
#pragma once

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Is told what happens to the application, on the main thread.
class ApplicationObserver {
 public:
  virtual ~ApplicationObserver() = default;
  /// The screen has been turned; the application is laid out anew after this.
  virtual void handleOrientationChange() = 0;
  /// It is in front and has the user's attention from now on.
  virtual void appDidBecomeActive() = 0;
  /// Something else takes its place, for a moment or for good.
  virtual void appWillResignActive() = 0;
  /// Whatever is presented over the host's root is being dismissed: who presents something takes it
  /// back.
  virtual void presentedScreensDismissed() {}
};

/// The host application: who watches it, and what a show changes of it.
class Application : public Need {
 public:
  /// Told from now on, until it is removed; it must be removed before it goes.
  virtual void addObserver(ApplicationObserver& observer) = 0;
  /// Told nothing more, within a call too, in which observers may come and go.
  virtual void removeObserver(ApplicationObserver& observer) = 0;
  /// Keeps the screen from dimming and locking by itself.
  virtual void setIdleTimerDisabled(bool disabled) = 0;
  /// Clears the screen of the system's own bars, or lets them come back.
  virtual void setStatusBarHidden(bool hidden) = 0;
  /// Dismisses, animated, whatever is presented over the host's root, and tells the observers.
  virtual void dismissPresentedScreens() = 0;
  /// Whether the system has a page of settings for this application.
  virtual bool canOpenSettings() const = 0;
  /// Leaves the application for that page, or does nothing.
  virtual void openSettings() = 0;
  /// Sound plays even when the phone is silenced.
  virtual void useAudioPlaybackCategory() = 0;
};

}  // namespace v0
}  // namespace halvora
