// SPDX-License-Identifier: Apache-2.0
// The screen as an application in a window has it: as large as its window, the machine's first
// screen as long as there is none. The backlight is a service. Owned by QtPlatform; main thread.
#pragma once

#include "adapters/qt/qt_platform_services.h"
#include "halvora/platform/screen.h"

namespace halvora {

class QtScreen final : public Screen {
 public:
  /// The services must outlive this.
  explicit QtScreen(const QtPlatformServices& services) : services_(services) {}

  Size bounds() const override;
  double brightness() const override;
  void setBrightness(double level) override;
  float currentEDRHeadroom() const override { return 1; }

 private:
  /// A level that nobody can change must be the highest: a ramp ends where it is reached.
  bool hasBacklight() const { return services_.brightness && services_.setBrightness; }

  const QtPlatformServices& services_;
};

}  // namespace halvora
