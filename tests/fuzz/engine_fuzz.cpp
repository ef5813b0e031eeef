// SPDX-License-Identifier: Apache-2.0
// A byte string as everything that can happen to a phone with an engine on it: packets, time,
// activations, seats, defaults, radio faults, permissions, hosts and files that come and go. The
// rules of EngineWorld hold after every turn, and in the end nothing is left of it.
#include <algorithm>
#include <array>
#include <string>

#include "tests/fuzz/fuzz_targets.h"
#include "tests/support/engine_world.h"

namespace halvora {

namespace {

class Script {
 public:
  Script(EngineWorld& world, FuzzInput& input) : world_(world), input_(input) {}

  // Looks and time are what a show is made of; the rest shares what is left.
  void step() {
    const int act = input_.byte();
    if (act < 96) return look(act % 4);
    if (act < 144) return time(act % 8);
    switch (act % 28) {
      case 0:
        return world_.becomeActive();
      case 1:
        return world_.resignActive();
      case 2:
        return sit();
      case 3:
        return world_.sit(0, 0, "");
      case 4:
      case 5:
        return write();
      case 6:
      case 7:
        return world_.setRadio(static_cast<CentralState>(input_.byte() % 6));
      case 8:
        return world_.setRadio(CentralState::poweredOn);
      case 9:
        return world_.setPermission(static_cast<BluetoothAuthorization>(input_.byte() % 4));
      case 10:
        return world_.setHost(static_cast<EngineWorld::Host>(input_.byte() % 5));
      case 11:
        return allow();
      case 12:
      case 13:
        return world_.putClip(map(), static_cast<EngineWorld::Clip>(input_.byte() % 5));
      case 14:
        return still();
      case 15:
        return world_.removeStills();
      case 16:
        return world_.precompute(EngineWorld::kVenue, coordinate(), coordinate());
      case 17:
        return world_.invalidate(EngineWorld::kVenue);
      case 18:
        return world_.playVideo(std::to_string(input_.byte() % 12));
      case 19:
        return world_.layOut(input_.two(), input_.two());
      case 20:
        return world_.dim(input_.byte() / 255.0);
      case 21:
        return world_.jumpClock((input_.two() - 32768) * 60.0);
      case 22:
        return world_.start();
      case 23:
        return input_.byte() % 4 == 0 ? world_.beginAnew() : world_.turnPhone();
      case 24:
        return world_.hear(input_.take(input_.byte() % 32));
      case 25:
        return world_.hearNothing();
      case 26:
        return repeat();
      default:
        return world_.pass(milliseconds(20'000));
    }
  }

 private:
  // Changes some fields, most often with the next number.
  void look(int changes) {
    for (int left = changes; left > 0; --left) {
      const BroadcastField& field = kBroadcastFields[input_.byte() % kBroadcastFields.size()];
      field.value.set(packet_, field.value.bytes() == 2 ? input_.two() : input_.byte());
    }
    if (packet_.applicationId == 0) packet_.applicationId = 1;
    ++packet_.sequence;
    world_.hear(packet_);
  }

  // The same looks in turn, faster than any show.
  void repeat() {
    Broadcast other = packet_;
    other.mode = input_.byte();
    other.ledMode = static_cast<std::uint8_t>(input_.byte() % 12);
    for (int left = input_.byte() % 32; left > 0; --left) {
      std::swap(packet_, other);
      packet_.sequence = other.sequence = static_cast<std::uint16_t>(other.sequence + 1);
      world_.hear(packet_);
      world_.pass(milliseconds(10));
    }
  }

  void time(int kind) {
    constexpr std::array<long long, 8> kSpans = {0, 1, 10, 90, 250, 1000, 3000, 8000};
    world_.pass(milliseconds(kSpans[static_cast<std::size_t>(kind)] + input_.byte() % 7));
  }

  std::int64_t coordinate() { return input_.byte() % 12 - 2; }
  int map() { return 1 + input_.byte() % EngineWorld::kMaps; }
  void sit() { world_.sit(coordinate(), coordinate(), "A"); }

  void write() {
    constexpr std::array<const char*, 10> kKeys = {"xPos",
                                                   "yPos",
                                                   "selectedSection",
                                                   "pairedBucketID",
                                                   "appID",
                                                   "venueID",
                                                   "syncCloud",
                                                   "bluetoothStatus",
                                                   "LastAppOpenCallDate",
                                                   "LastReceivedSignalCallDate"};
    const std::string key = kKeys[input_.byte() % kKeys.size()];
    const int kind = input_.byte() % 8;
    const std::int64_t number = input_.two();
    const std::array<std::optional<DefaultsValue>, 8> values = {
        std::nullopt,
        DefaultsValue(number),
        DefaultsValue(static_cast<double>(number) * 1e300 * 1e10),
        DefaultsValue(std::to_string(number)),
        DefaultsValue(number % 2 == 0),
        DefaultsValue(Date{static_cast<double>(number) * 1e5}),
        DefaultsValue(DefaultsArray{DefaultsValue(number)}),
        DefaultsValue(std::string("../") + std::string(static_cast<std::size_t>(number) % 90, '/')),
    };
    world_.write(key, values[static_cast<std::size_t>(kind)]);
  }

  void allow() {
    std::vector<std::string> ids;
    for (int left = input_.byte() % 3; left > 0; --left) {
      ids.push_back("1:" + std::to_string(input_.byte() % 4));
    }
    world_.allow(std::move(ids));
  }

  void still() {
    const int which = map();
    const int frame = 1 + input_.byte() % 4;
    world_.putStill(which, frame, input_.byte() % 2 == 0);
  }

  EngineWorld& world_;
  FuzzInput& input_;
  Broadcast packet_{.applicationId = 1, .venueId = 7, .master = 200, .mode = 1, .transmitter = 1};
};

}  // namespace

int fuzzEngine(FuzzBytes bytes) {
  FuzzInput input(bytes);
  const int phone = input.byte();
  EngineWorld world(static_cast<std::uint64_t>(phone), phone % 8 != 7);
  if (phone % 16 != 15) {
    world.start();
    world.pass(milliseconds(1500));
  }
  Script script(world, input);
  while (!input.isEmpty() && world.complaint().empty()) script.step();
  if (world.complaint().empty()) world.settle();
  if (!world.complaint().empty()) throw FuzzFailure(world.complaint());
  return 0;
}

}  // namespace halvora
