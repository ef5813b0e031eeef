// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/qt_application.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace halvora {

QtApplication::QtApplication(const QtPlatformServices& services)
    : services_(services), isActive_(QGuiApplication::applicationState() == Qt::ApplicationActive) {
  QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, &context_,
                   [this](Qt::ApplicationState state) { stateChanged(state); });
  if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    QObject::connect(screen, &QScreen::orientationChanged, &context_,
                     [this] { tell(&ApplicationObserver::handleOrientationChange); });
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
  tell(&ApplicationObserver::presentedScreensDismissed);
}

void QtApplication::openSettings() {
  if (services_.openSettings) services_.openSettings();
}

void QtApplication::stateChanged(Qt::ApplicationState state) {
  const bool isActive = state == Qt::ApplicationActive;
  if (std::exchange(isActive_, isActive) == isActive) return;
  tell(isActive ? &ApplicationObserver::appDidBecomeActive
                : &ApplicationObserver::appWillResignActive);
}

// Whoever is told may add and remove observers, itself too.
void QtApplication::tell(void (ApplicationObserver::*what)()) {
  const std::vector<ApplicationObserver*> told = observers_;
  for (ApplicationObserver* observer : told) {
    if (std::ranges::find(observers_, observer) != observers_.end()) (observer->*what)();
  }
}

}  // namespace halvora
