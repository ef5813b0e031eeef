// SPDX-License-Identifier: Apache-2.0
// The host application on Qt: active as long as one of its windows has the user's attention. What
// Qt cannot do goes to the services. Owned by QtPlatform; main thread.
#pragma once

#include <QObject>
#include <vector>

#include "platform/application.h"
#include "platform/qt/qt_platform_services.h"

namespace halvora {

class QtApplication final : public Application {
 public:
  /// Needs an application object. The services must outlive this.
  explicit QtApplication(const QtPlatformServices& services);
  ~QtApplication() override = default;
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;

  void addObserver(ApplicationObserver& observer) override { observers_.push_back(&observer); }
  void removeObserver(ApplicationObserver& observer) override { std::erase(observers_, &observer); }
  void setIdleTimerDisabled(bool disabled) override;
  void setStatusBarHidden(bool hidden) override;
  void dismissPresentedScreens() override;
  bool canOpenSettings() const override { return static_cast<bool>(services_.openSettings); }
  void openSettings() override;
  /// A desktop has no switch that silences only some sounds.
  void useAudioPlaybackCategory() override {}

 private:
  void stateChanged(Qt::ApplicationState state);
  void tell(void (ApplicationObserver::*what)());

  const QtPlatformServices& services_;
  std::vector<ApplicationObserver*> observers_;
  bool isActive_ = false;
  bool isIdleTimerDisabled_ = false;
  bool isStatusBarHidden_ = false;
  /// Ends the connections.
  QObject context_;
};

}  // namespace halvora
