// SPDX-License-Identifier: Apache-2.0
#include "venue/live/live_air.h"

namespace halvora {

void LineAir::send(std::span<const std::uint8_t> data, bool /*isRepeat*/) {
  const auto time = (loop_.now() - begin_) / milliseconds(1);
  isWritable_ = isWritable_ && output_("{\"t\":" + std::to_string(time) + ",\"packet\":\"" +
                                       NSDataToHex(data) + "\"}\n");
}

}  // namespace halvora
