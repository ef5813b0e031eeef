// SPDX-License-Identifier: Apache-2.0
// The surface beneath `HalvoraView`, by name for the demo alone: its phones have engines of their
// own, where a host has the one of its QML engine. No code; registered with the demo's module.
#pragma once

#include <QObject>

#include <qqmlregistration.h>

#include "faces/qt/light_surface.h"

namespace halvora {

struct LightSurfaceType {
  Q_GADGET
  QML_FOREIGN(halvora::LightSurface)
  QML_NAMED_ELEMENT(LightSurface)
};

}  // namespace halvora
