// SPDX-License-Identifier: Apache-2.0
// What is behind the public engine, for tests alone: whoever simulates makes a `ShowEngine`, and
// all others have the public face. Never installed.
#pragma once

#include <memory>

#include "engine/show_engine.h"
#include "halvora/engine.h"

namespace halvora {
// Friends of the public engine, and so in its namespace.
inline namespace v0 {

/// As long as the engine lives.
inline ShowEngine& insideOf(HalvoraViewController& engine) { return *engine.inside_; }
inline const ShowEngine& insideOf(const HalvoraViewController& engine) { return *engine.inside_; }

/// The public face of an engine that was made in an unusual way.
std::unique_ptr<HalvoraViewController> controllerOf(std::unique_ptr<ShowEngine> inside);

}  // namespace v0
}  // namespace halvora
