// SPDX-License-Identifier: Apache-2.0
#include "venue/show/packet.h"

#include "engine/broadcast.h"
#include "halvora/platform/bluetooth.h"
#include "light/show_state.h"
#include "venue/base/json_line.h"

namespace halvora {

namespace {

std::string refusalOf(std::span<const std::uint8_t> data, BroadcastFormat format) {
  if (format == BroadcastFormat::tooShort || data.size() < kShowPrefix.size()) {
    return "only " + std::to_string(data.size()) + " bytes; a show packet has " +
           std::to_string(kShortestBroadcast) + " or more";
  }
  return "another company prefix: " + NSDataToHex(data.first(kShowPrefix.size())) + " instead of " +
         NSDataToHex(kShowPrefix);
}

}  // namespace

std::string describePacket(std::span<const std::uint8_t> data, const TagCheck& isTagGood) {
  JsonLine line;
  line.begin();
  const BroadcastFormat format = formatOf(data);
  if (format != BroadcastFormat::valid) {
    return std::string(line.add("rejected", refusalOf(data, format)).end());
  }
  const Broadcast broadcast = decodeBroadcast(data);
  for (const BroadcastField& field : kBroadcastFields) {
    line.add(field.name, std::int64_t{field.value.of(broadcast)});
  }
  const std::string key = NSDataToHex(data.first(kBroadcastKeySize));
  const std::string transmitter = transmitterKey(broadcast.applicationId, broadcast.transmitter);
  line.add("broadcastKey", key)
      .add("transmitterKey", transmitter)
      .add("cueMilliseconds", std::int64_t{cueMilliseconds(broadcast)})
      .add("cueToken", std::int64_t{cueToken(broadcast)})
      .add("speedPercent", std::int64_t{percentageSpeed(broadcast.speed)})
      .add("ledSpeedPercent", std::int64_t{percentageSpeed(broadcast.ledSpeed)});
  if (const auto packet = signedBroadcastIn(data)) {
    line.add("tag", NSDataToHex(tagIn(*packet)));
    if (isTagGood) line.add("tagValid", isTagGood(*packet));
  }
  return std::string(line.end());
}

}  // namespace halvora
