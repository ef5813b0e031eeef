// SPDX-License-Identifier: Apache-2.0
// Waiting for Qt's events in tests: for as long as it takes, up to a bound that only a failure
// reaches. Main thread.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>
#include <stdexcept>

namespace halvora {

/// Lets Qt do things until that is so. Ends the test if it never is.
inline void letQtWorkUntil(const std::function<bool()>& isSo) {
  if (isSo()) return;
  const QDeadlineTimer latest(std::chrono::seconds(60));
  // A loop without events would not wake up to see that it waits in vain.
  QTimer ticks;
  ticks.start(std::chrono::seconds(1));
  while (!isSo()) {
    if (latest.hasExpired()) throw std::runtime_error("waited a minute in vain");
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
}

}  // namespace halvora
