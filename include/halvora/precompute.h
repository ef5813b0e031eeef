// SPDX-License-Identifier: Apache-2.0
// What a host hears of seat tables that are built ahead of the show. Both are called on the main
// thread, in turns of their own, and may do anything there, destroying the engine included; one
// that throws is counted, and the work goes on.
#pragma once

#include <functional>
#include <string>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Of `total` pixel maps `done` have their table; the map's number as a text.
using PrecomputeProgress = std::function<void(int done, int total, const std::string& mapId)>;
/// Once, at the end: fewer done than there are where some could not be built.
using PrecomputeCompletion = std::function<void(int done, int total)>;

}  // namespace v0
}  // namespace halvora
