// SPDX-License-Identifier: Apache-2.0
// How long the show takes to come and to go.
#pragma once

#include "halvora/platform/time.h"

namespace halvora {

inline constexpr Duration kShowFade = milliseconds(1000);

}  // namespace halvora
