// SPDX-License-Identifier: Apache-2.0
// Which engine a host view shows: the process's one, made on that phone when it is first asked for,
// or one that the host made itself. A value that the host views carry; phone and engine outlive
// them. Main thread.
#pragma once

#include "halvora/engine.h"
#include "halvora/platform/platform.h"

namespace halvora {

class EmbeddedEngine {
 public:
  /// The process's engine.
  EmbeddedEngine(const Platform& platform)  // NOLINT(google-explicit-constructor)
      : platform_(platform) {}
  EmbeddedEngine(const Platform& platform, HalvoraViewController& engine)
      : platform_(platform), engine_(&engine) {}

  const Platform& platform() const { return platform_; }
  HalvoraViewController& controller() const {
    return engine_ != nullptr ? *engine_ : HalvoraViewController::sharedInstance(platform_);
  }

 private:
  Platform platform_;
  HalvoraViewController* engine_ = nullptr;
};

}  // namespace halvora
