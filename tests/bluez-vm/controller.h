// SPDX-License-Identifier: Apache-2.0
// A Bluetooth LE controller in software, as much of one as a system needs to scan and to advertise:
// it answers the kernel's commands, holds one advertisement and reports what it hears. The program
// of the emulated machine owns them; one thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <vector>

namespace halvora {

using BluetoothAddress = std::array<std::uint8_t, 6>;

/// What is in the air at one moment.
struct AirReport {
  /// Of the kind: 0 connectable, 3 not.
  std::uint8_t kind = 3;
  bool isRandom = true;
  BluetoothAddress address{};
  /// At most 31 bytes.
  std::vector<std::uint8_t> data;
  std::int8_t rssi = -60;
};

class Controller {
 public:
  using Send = std::function<void(std::span<const std::uint8_t> packet)>;

  /// `send` takes what the kernel is to get.
  Controller(BluetoothAddress address, Send send) : address_(address), send_(std::move(send)) {}

  /// A packet of the kernel's. Whatever is no command is dropped.
  void take(std::span<const std::uint8_t> packet);

  /// Reports it if it is listening, and if this address was not reported since it began where
  /// repeats are not wanted. Whether it did.
  bool hear(const AirReport& report);
  bool isListening() const { return isScanning_; }
  /// Answers every wish to scan with an error, as a controller does that is out of order.
  void setRefusing(bool isRefusing) { isRefusing_ = isRefusing; }

  /// Counts up with each advertisement that begins, or begins anew.
  std::uint64_t begun() const { return begun_; }
  bool isAdvertising() const { return isAdvertising_; }
  /// Milliseconds from one to the next.
  int interval() const { return interval_; }
  AirReport advertisement() const;

 private:
  using Parameters = std::span<const std::uint8_t>;
  struct Command;
  static const Command kCommands[];

  void answer(std::uint16_t operation, std::uint8_t status, std::span<const std::uint8_t> rest);
  void reset(Parameters);
  void setRandomAddress(Parameters parameters);
  void setAdvertisingParameters(Parameters parameters);
  void setAdvertisingData(Parameters parameters);
  void enableAdvertising(Parameters parameters);
  void enableScan(Parameters parameters);

  const BluetoothAddress address_;
  const Send send_;
  BluetoothAddress random_{};
  bool isScanning_ = false;
  bool dropsRepeats_ = false;
  bool isRefusing_ = false;
  std::set<BluetoothAddress> reported_;
  bool isAdvertising_ = false;
  std::uint64_t begun_ = 0;
  int interval_ = 100;
  AirReport own_;
};

}  // namespace halvora
