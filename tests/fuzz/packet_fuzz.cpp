// SPDX-License-Identifier: Apache-2.0
// Any bytes as the data of an advertisement, and as its hexadecimal text: what is told of them
// follows from the bytes by the plainest reading, and what was read can be written again.
#include <algorithm>
#include <string>

#include "engine/broadcast.h"
#include "light/show_state.h"
#include "tests/fuzz/fuzz_targets.h"
#include "text/numbers.h"
#include "venue/show/packet.h"
#include "venue/show/scenario.h"

namespace halvora {

namespace {

BroadcastFormat plainFormatOf(FuzzBytes bytes) {
  if (bytes.size() < 2 || bytes[0] != 0x09 || bytes[1] != 0xC9) return BroadcastFormat::otherMaker;
  return bytes.size() < 26 ? BroadcastFormat::tooShort : BroadcastFormat::valid;
}

void checkFields(FuzzBytes bytes) {
  const Broadcast broadcast = decodeBroadcast(bytes);
  for (const BroadcastField& field : kBroadcastFields) {
    const bool isLast = field.value == &Broadcast::transmitter;
    const std::size_t at = isLast ? bytes.size() - 1 : field.offset;
    const int plain = field.value.bytes() == 2 ? bytes[at] << 8 | bytes[at + 1] : bytes[at];
    require(field.value.of(broadcast) == plain, "a field is what its bytes say");
  }
  const BroadcastBytes again = encodeBroadcast(broadcast);
  require(std::ranges::equal(FuzzBytes(again).first(kShortestBroadcast - 1),
                             bytes.first(kShortestBroadcast - 1)) &&
              again.back() == bytes.back(),
          "a packet is written as it was read");
  const int perc = percentageSpeed(broadcast.speed);
  require(perc >= 0 && perc <= 100, "a speed is a percentage");
  require(cueToken(broadcast) >= 1 && cueToken(broadcast) <= 0xFFFF, "a frame is 1 to 65535");
  require(cueMilliseconds(broadcast) == bytes[16] * 60'000 + bytes[17] * 1000 + bytes[18] * 10,
          "a position is minutes, seconds and hundredths");
}

void checkText(std::string_view text) {
  const auto bytes = bytesOfHex(text);
  if (!bytes) return;
  std::string digits;
  for (const char character : text) {
    if (hexDigit(character) < 0) continue;
    digits += "0123456789ABCDEF"[hexDigit(character)];
  }
  require(NSDataToHex(*bytes) == digits, "hexadecimal text gives its digits' bytes");
}

}  // namespace

int fuzzPacket(FuzzBytes bytes) {
  require(formatOf(bytes) == plainFormatOf(bytes), "a packet is ours by prefix and length");
  const auto back = bytesOfHex(NSDataToHex(bytes));
  require(back && std::ranges::equal(*back, bytes), "bytes survive as hexadecimal text");
  checkText(textOf(bytes));
  const bool isOurs = plainFormatOf(bytes) == BroadcastFormat::valid;
  if (isOurs) checkFields(bytes);
  const std::string line = describePacket(bytes);
  require(
      line.starts_with(isOurs ? "{\"applicationId\":" : "{\"rejected\":") && line.ends_with("}\n"),
      "a packet is described as one line");
  return 0;
}

}  // namespace halvora
