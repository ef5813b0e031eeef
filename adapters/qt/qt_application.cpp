// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_application.h"

#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace halvora {

QtApplication::QtApplication(const QtPlatformServices& services)
    : services_(services),
      hasAttention_(QGuiApplication::applicationState() == Qt::ApplicationActive),
      isActive_(hasAttention_) {
  QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, &context_,
                   [this](Qt::ApplicationState state) {
                     hasAttention_ = state == Qt::ApplicationActive;
                     lookWhetherActive();
                   });
  if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    QObject::connect(screen, &QScreen::orientationChanged, &context_,
                     [this] { observers_.tell(&ApplicationObserver::handleOrientationChange); });
  }
}

void QtApplication::setIdleTimerDisabled(bool disabled) {
  if (std::exchange(isIdleTimerDisabled_, disabled) == disabled) return;
  if (services_.setIdleTimerDisabled) services_.setIdleTimerDisabled(disabled);
}

void QtApplication::setStatusBarHidden(bool hidden) {
  if (std::exchange(isStatusBarHidden_, hidden) == hidden) return;
  if (services_.setStatusBarHidden) services_.setStatusBarHidden(hidden);
}

void QtApplication::dismissPresentedScreens() {
  observers_.tell(&ApplicationObserver::presentedScreensDismissed);
}

void QtApplication::openSettings() {
  if (services_.openSettings) services_.openSettings();
}

// Told also where the application has not had the user's attention: a show may be on all the same.
void QtApplication::setSuspended(bool isSuspended) {
  if (std::exchange(isSuspended_, isSuspended) == isSuspended) return;
  if (!isSuspended) return lookWhetherActive();
  isActive_ = false;
  observers_.tell(&ApplicationObserver::appWillResignActive);
}

void QtApplication::lookWhetherActive() {
  const bool isActive = hasAttention_ && !isSuspended_;
  if (std::exchange(isActive_, isActive) == isActive) return;
  observers_.tell(isActive ? &ApplicationObserver::appDidBecomeActive
                           : &ApplicationObserver::appWillResignActive);
}

}  // namespace halvora
