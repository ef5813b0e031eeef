// SPDX-License-Identifier: Apache-2.0
// The lamp beside the camera. Main thread.
#pragma once

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class Torch : public Need {
 public:
  /// Whether there is a lamp that can stay lit.
  virtual bool hasTorch() const = 0;
  /// Whether the camera has a flash; a show lights the torch only where both are there.
  virtual bool hasFlash() const = 0;
  /// Takes the device for the write and lets it go again; where another application holds it,
  /// nothing happens.
  virtual void setOn(bool on) = 0;
};

}  // namespace v0
}  // namespace halvora
