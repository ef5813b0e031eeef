// SPDX-License-Identifier: Apache-2.0
#include "light/show_state.h"

#include <cmath>

namespace halvora {

int percentageSpeed(int speed) {
  const float share = static_cast<float>(speed) / 255.0F * 100.0F;
  return 100 - static_cast<int>(std::round(share));
}

}  // namespace halvora
