// SPDX-License-Identifier: Apache-2.0
// The other end of the measurement, in a process of its own: takes the Bluetooth daemon's name on a
// bus and, once it is asked to scan, says so many signals a second of a show and of foreign
// devices. Its last packet says how many of the show there were.
#pragma once

#include <cstdint>
#include <string>

#include "adapters/linux/bus/bus_connection.h"
#include "adapters/linux/poll_run_loop.h"

namespace halvora {

struct Air {
  int seconds = 10;
  int showTransmitters = 8;
  /// Of each transmitter.
  int showPacketsASecond = 10;
  int foreignASecond = 1000;
  int foreignDevices = 20'000;
  bool hasMonitors = false;
};

/// What ends a measurement: the packet's sequence number is beyond every other.
inline constexpr std::uint8_t kLastPacketMark = 0xEE;

class Speaker {
 public:
  Speaker(std::string address, const Air& air) : address_(std::move(address)), air_(air) {}

  /// Until everything is said, or nobody has asked for a minute. False if the bus would not have
  /// it.
  bool run();

 private:
  static int handle(sd_bus_message* message, void* self, sd_bus_error*);
  int answer(sd_bus_message* call, const std::string& member);
  int answerObjects(sd_bus_message* call);
  void startMonitor(sd_bus_message* call);
  void speak();
  void speakAt(std::int64_t tick);
  void say(int device, bool isShow, std::uint32_t number, bool isFirst);
  void sayLast();
  void tellFound(const std::string& path);
  void send(sd_bus_message* message);

  const std::string address_;
  const Air air_;
  PollRunLoop loop_;
  BusConnection connection_{loop_, loop_};
  Timer ticks_;
  std::int64_t tick_ = 0;
  std::uint32_t showPackets_ = 0;
  std::uint32_t foreign_ = 0;
  std::string client_;
  bool hasMonitor_ = false;
  bool isOver_ = false;
};

}  // namespace halvora
