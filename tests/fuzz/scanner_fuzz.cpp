// SPDX-License-Identifier: Apache-2.0
// Advertisements, seconds, radio faults and activations in any order, with any list of allowed
// transmitters: the scanner obeys what the rules in their plainest form obey.
#include <algorithm>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/scanner.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

using Data = std::vector<std::uint8_t>;

// What a phone is to do, with texts for keys and nothing packed, sorted or kept for later.
class PlainScanner {
 public:
  explicit PlainScanner(std::vector<std::string> allowed) : allowed_(std::move(allowed)) {}

  PacketFate hear(const Data& data) {
    const auto at = [&](std::size_t place) { return std::uint32_t{data[place]}; };
    if (data.size() < 2 || data[0] != 0x09 || data[1] != 0xC9) return PacketFate::otherMaker;
    if (data.size() < 26) return PacketFate::tooShort;
    const std::string key =
        std::to_string(at(2) * 256 + at(3)) + ":" + std::to_string(at(data.size() - 1));
    const bool isVenueWide = data.back() == 255;
    if (!isVenueWide) othersAreNear = true;
    const bool isListed = std::ranges::find(allowed_, key) != allowed_.end();
    if (!allowed_.empty() && !isListed) return PacketFate::notAllowed;
    if (allowed_.empty() && isVenueWide && othersAreNear) return PacketFate::silenced;
    isInside = true;
    ++accepted;
    const std::uint32_t number = at(23) * 256 + at(24);
    const bool isWrap = sequence > 60000 && number < 56000;
    if (number <= sequence && !isWrap) return PacketFate::staleSequence;
    sequence = number;
    const Data look(data.begin(), data.begin() + 23);
    if (look == shown) return PacketFate::sameBroadcast;
    shown = look;
    return PacketFate::processed;
  }

  void second(bool isFirst) {
    if (isOk && isFirst) shown.clear();
    if (isOk) {
      if (accepted == 0 && isInside) ++emptySeconds;
      if ((emptySeconds >= 7 && isInside) || isActivated) {
        isActivated = isInside = false;
        emptySeconds = 0;
        sequence = 0;
        shown.clear();
        ++drops;
      }
      accepted = 0;
      isScanning = true;
    }
    othersAreNear = false;
  }

  void turnRadio(CentralState state) {
    isOk = state == CentralState::poweredOn;
    if (!isOk) isScanning = false;
  }

  bool isOk = true;
  bool isScanning = false;
  bool isInside = false;
  bool isActivated = false;
  int drops = 0;

 private:
  std::vector<std::string> allowed_;
  bool othersAreNear = false;
  int accepted = 0;
  int emptySeconds = 0;
  std::uint32_t sequence = 0;
  Data shown;
};

class Client final : public ScannerListener {
 public:
  PacketFate processEffect(const Broadcast& broadcast) override {
    last = broadcast;
    ++looks;
    return PacketFate::processed;
  }
  void recievedSignal() override {}
  void showReceptionRate(int packets) override { rate = packets; }
  void dropShow() override { ++drops; }
  void videoReady() override {}

  Broadcast last;
  int looks = 0;
  int drops = 0;
  int rate = 0;
};

std::vector<std::string> listOf(FuzzInput& input) {
  std::vector<std::string> ids;
  for (int left = input.byte() % 4; left > 0; --left) {
    const int kind = input.byte();
    std::string id = std::to_string(input.two()) + ":" + std::to_string(input.byte());
    if (kind % 8 == 1) id.insert(id.begin(), ' ');
    if (kind % 8 == 2) id += ' ';
    if (kind % 8 == 3) id.insert(id.begin(), '0');
    if (kind % 8 == 4) id.resize(id.size() / 2);
    ids.push_back(std::move(id));
  }
  return ids;
}

class ScannerRun {
 public:
  ScannerRun(FuzzInput& input, const std::vector<std::string>& allowed)
      : input_(input), plain_(allowed) {
    phone_.bluetooth.log.isKept = phone_.defaults.log.isKept = false;
    scanner_.setAllowedTransmitterIds(allowed);
    scanner_.start();
  }

  void step() {
    const int act = input_.byte();
    if (act < 160) {
      hearLook(act);
    } else if (act < 192) {
      const FuzzBytes taken = input_.take(static_cast<std::size_t>(act) % 32);
      hear(Data(taken.begin(), taken.end()));
    } else if (act < 200) {
      hearNothing();
    } else if (act < 232) {
      for (int seconds = act % 4 == 3 ? 8 : 1; seconds > 0; --seconds) passSecond();
    } else if (act < 248) {
      const auto state = static_cast<CentralState>(act % 8 < 6 ? act % 8 : 5);
      // A central without a change says nothing.
      if (state != phone_.bluetooth.state()) plain_.turnRadio(state);
      phone_.bluetooth.setState(state);
    } else {
      state_.resetApp = true;
      plain_.isActivated = true;
    }
    require(state_.insideVenue == plain_.isInside, "a phone knows whether it is in the venue");
    require(client_.drops == plain_.drops, "a show is dropped when the venue is left");
    require(phone_.bluetooth.isScanning() == plain_.isScanning, "a phone scans while it can");
  }

 private:
  // The packet before, some bytes changed, with the next number or any other.
  void hearLook(int act) {
    for (int changes = act % 4; changes > 0; --changes) {
      const std::size_t place = input_.byte() % packet_.size();
      packet_[place] = input_.byte();
    }
    if (act % 8 < 4) {
      const unsigned next = packet_[23] * 256U + packet_[24] + 1;
      packet_[23] = static_cast<std::uint8_t>(next >> 8);
      packet_[24] = static_cast<std::uint8_t>(next);
    }
    hear(packet_);
  }

  void hear(const Data& data) {
    const ScanDiagnostics before = scanner_.diagnostics();
    const int looks = client_.looks;
    const bool isHeard = phone_.bluetooth.advertise(data);
    require(isHeard == plain_.isScanning, "a scan hears");
    if (!isHeard) return;
    const PacketFate fate = plain_.hear(data);
    for (std::size_t at = 0; at < kPacketFateCount; ++at) {
      const bool isIt = at == static_cast<std::size_t>(fate);
      require(scanner_.diagnostics().counts[at] == before.counts[at] + (isIt ? 1 : 0),
              "a packet is judged by the rules, and counted once");
    }
    require(client_.looks == looks + (fate == PacketFate::processed ? 1 : 0), "a look is shown");
    require(fate != PacketFate::processed || client_.last == decodeBroadcast(data), "and no other");
  }

  void hearNothing() {
    const std::uint64_t before = scanner_.diagnostics()[PacketFate::noManufacturerData];
    const bool isHeard = phone_.bluetooth.advertise(Advertisement{});
    require(scanner_.diagnostics()[PacketFate::noManufacturerData] == before + (isHeard ? 1 : 0),
            "an advertisement without data is counted");
  }

  void passSecond() {
    require(phone_.loop.runFor(milliseconds(1000)), "a second passes");
    plain_.second(isFirstSecond_);
    isFirstSecond_ = false;
  }

  static const JsonReader& json() {
    static const ExactJsonReader kReader;
    return kReader;
  }

  FuzzInput& input_;
  PlainScanner plain_;
  VirtualPhone phone_{json()};
  const Platform platform_ = phone_.platform();
  PresenceState state_;
  TimerSet timers_{phone_.loop};
  Client client_;
  Scanner scanner_{platform_, state_, timers_, client_};
  bool isFirstSecond_ = true;
  // A packet of application 1 and transmitter 7.
  Data packet_ = {0x09, 0xC9, 0, 1, 0, 7, 0, 255, 9, 9, 9, 1, 128,
                  0,    0,    0, 0, 0, 0, 0, 0,   0, 0, 0, 0, 7};
};

}  // namespace

int fuzzScanner(FuzzBytes bytes) {
  FuzzInput input(bytes);
  const std::vector<std::string> allowed = listOf(input);
  ScannerRun run(input, allowed);
  while (!input.isEmpty()) run.step();
  return 0;
}

}  // namespace halvora
