// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/judged_packets.h"

#include <algorithm>
#include <array>
#include <span>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "tests/fuzz/fuzz_target.h"

namespace halvora {

namespace {

constexpr std::size_t kLongest = 30;
constexpr std::uint64_t kPacketsATurn = 4096;

// Fields from so few values that every rule is met often.
class Packets {
 public:
  explicit Packets(std::uint64_t seed) : state_(seed * 2 + 1) {}

  FuzzBytes next() {
    const std::uint64_t bits = draw();
    bytes_ = {0x09, 0xC9};
    if ((bits & 31) == 0) bytes_[1] = 0xC8;
    bytes_[3] = static_cast<std::uint8_t>(bits >> 5 & 3);
    bytes_[4] = (bits >> 7 & 63) == 0 ? 1 : 0;
    bytes_[7] = 200;
    bytes_[8] = static_cast<std::uint8_t>(bits >> 13 & 3);
    bytes_[11] = 1;
    // Mostly the number before, as transmitters repeat themselves; now and then any other.
    if ((bits >> 15 & 63) == 0) ++sequence_;
    const bool isAny = (bits >> 21 & 0xFFF) == 0;
    const auto number = isAny ? static_cast<std::uint16_t>(bits >> 40) : sequence_;
    if (isAny) sequence_ = number;
    bytes_[23] = static_cast<std::uint8_t>(number >> 8);
    bytes_[24] = static_cast<std::uint8_t>(number);
    const std::size_t size = (bits >> 33 & 15) == 0 ? 20 + (bits >> 37 & 7) : 26 + (bits >> 37 & 3);
    bytes_[size - 1] = (bits >> 56 & 7) == 0 ? 255 : static_cast<std::uint8_t>(bits >> 59 & 3);
    return FuzzBytes(bytes_).first(size);
  }

 private:
  std::uint64_t draw() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_ * 0x2545F4914F6CDD1DU;
  }

  std::uint64_t state_;
  std::uint16_t sequence_ = 0;
  std::array<std::uint8_t, kLongest> bytes_{};
};

// The rules without a thought for speed; see fuzzScanner for the same with texts and lists.
class PlainJudge {
 public:
  explicit PlainJudge(bool hasList) : hasList_(hasList) {}

  PacketFate judge(FuzzBytes data) {
    if (data[0] != 0x09 || data[1] != 0xC9) return PacketFate::otherMaker;
    if (data.size() < 26) return PacketFate::tooShort;
    const bool isVenueWide = data.back() == 255;
    othersAreNear = othersAreNear || !isVenueWide;
    // The list has application 1 with transmitters 1 and 255.
    const bool isListed = data[2] == 0 && data[3] == 1 && (data.back() == 1 || isVenueWide);
    if (hasList_ && !isListed) return PacketFate::notAllowed;
    if (!hasList_ && isVenueWide && othersAreNear) return PacketFate::silenced;
    const unsigned number = data[23] * 256U + data[24];
    if (number <= sequence_ && !(sequence_ > 60000 && number < 56000)) {
      return PacketFate::staleSequence;
    }
    sequence_ = number;
    if (isShown_ && std::ranges::equal(data.first(23), shown_)) return PacketFate::sameBroadcast;
    std::ranges::copy(data.first(23), shown_.begin());
    isShown_ = true;
    if (data[2] == 0 && data[3] == 0) return PacketFate::noApplication;
    return data[4] == 0 ? PacketFate::processed : PacketFate::badSyncFlag;
  }

  bool othersAreNear = false;

 private:
  bool hasList_;
  unsigned sequence_ = 0;
  bool isShown_ = false;
  std::array<std::uint8_t, 23> shown_{};
};

}  // namespace

std::uint64_t judgePackets(std::uint64_t count, std::uint64_t seed) {
  const ExactJsonReader json;
  VirtualPhone phone(json);
  phone.bluetooth.log.isKept = phone.screen.log.isKept = phone.defaults.log.isKept = false;
  phone.torch.log.isKept = phone.haptics.log.isKept = phone.videoLog.isKept = false;
  phone.http.log.isKept = false;
  ShowEngine engine(phone.platform());
  engine.viewDidLoad();
  const bool hasList = seed % 2 == 0;
  if (hasList) engine.setAllowedTransmitterIds({"1:255", "1:1", "01:2"});
  engine.start();
  require(phone.loop.runFor(milliseconds(1500)), "time goes on");

  Packets packets(seed);
  PlainJudge judge(hasList);
  std::array<std::uint64_t, kPacketFateCount> expected{};
  for (std::uint64_t done = 0; done < count;) {
    const std::uint64_t turn = std::min(kPacketsATurn, count - done);
    for (std::uint64_t at = 0; at < turn; ++at) {
      const FuzzBytes data = packets.next();
      ++expected[static_cast<std::size_t>(judge.judge(data))];
      phone.bluetooth.advertise(data);
    }
    done += turn;
    require(engine.diagnostics().counts == expected, "packets are judged by the rules");
    // A cycle each time, so that the venue is never left.
    require(phone.loop.runFor(milliseconds(1000)), "time goes on");
    judge.othersAreNear = false;
  }
  return expected[static_cast<std::size_t>(PacketFate::processed)];
}

}  // namespace halvora
