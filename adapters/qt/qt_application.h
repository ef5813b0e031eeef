// SPDX-License-Identifier: Apache-2.0
// The host application on Qt: active as long as one of its windows has the user's attention and the
// machine is awake. What Qt cannot do goes to the services. Owned by QtPlatform; main thread.
#pragma once

#include <QObject>

#include "adapters/qt/qt_platform_services.h"
#include "adapters/standard/application_observers.h"
#include "halvora/platform/application.h"

namespace halvora {

class QtApplication final : public Application {
 public:
  /// Needs an application object. The services must outlive this.
  explicit QtApplication(const QtPlatformServices& services);
  ~QtApplication() override = default;
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;

  /// The machine goes to sleep or the application to its end; or it is awake again.
  void setSuspended(bool isSuspended);

  void addObserver(ApplicationObserver& observer) override { observers_.add(observer); }
  void removeObserver(ApplicationObserver& observer) override { observers_.remove(observer); }
  void setIdleTimerDisabled(bool disabled) override;
  void setStatusBarHidden(bool hidden) override;
  void dismissPresentedScreens() override;
  bool canOpenSettings() const override { return static_cast<bool>(services_.openSettings); }
  void openSettings() override;
  /// A desktop has no switch that silences only some sounds.
  void useAudioPlaybackCategory() override {}

 private:
  void lookWhetherActive();

  const QtPlatformServices& services_;
  ApplicationObservers observers_;
  bool hasAttention_ = false;
  bool isSuspended_ = false;
  bool isActive_ = false;
  bool isIdleTimerDisabled_ = false;
  bool isStatusBarHidden_ = false;
  /// Ends the connections.
  QObject context_;
};

}  // namespace halvora
