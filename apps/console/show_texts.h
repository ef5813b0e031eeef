// SPDX-License-Identifier: Apache-2.0
// The demo's words about a show, for the window and the contact sheet alike.
#pragma once

#include <QString>

#include "apps/console/show_files.h"
#include "halvora/platform/time.h"

namespace halvora {

inline QString titleOf(const ShowFiles& files) {
  return QStringLiteral("Halvora · ") + QString::fromStdString(files.name);
}

/// Minutes, seconds and tenths: "3:07.5".
inline QString textOf(Duration time) {
  const auto tenths = time / milliseconds(100);
  return QStringLiteral("%1:%2.%3")
      .arg(tenths / 600)
      .arg(tenths / 10 % 60, 2, 10, QLatin1Char('0'))
      .arg(tenths % 10);
}

}  // namespace halvora
