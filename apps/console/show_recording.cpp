// SPDX-License-Identifier: Apache-2.0
#include "apps/console/show_recording.h"

#include <utility>

#include "engine/broadcast.h"
#include "venue/base/json_line.h"

namespace halvora {

ShowRecording::ShowRecording(Duration begin, const DefaultsDictionary& seat) : begin_(begin) {
  JsonLine line;
  if (!seat.empty()) {
    text_ += line.begin().add("at", std::int64_t{0}).addDefault("defaults", seat).end();
  }
  text_ += line.begin().add("at", std::int64_t{0}).add("start", true).end();
}

void ShowRecording::add(Duration now, std::span<const std::uint8_t> packet) {
  JsonLine line;
  text_ += line.begin()
               .addLevel("at", toSeconds(now - begin_ + kRecordingLead))
               .add("packet", NSDataToHex(packet))
               .end();
  ++packets_;
}

}  // namespace halvora
