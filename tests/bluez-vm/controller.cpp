// SPDX-License-Identifier: Apache-2.0
#include "tests/bluez-vm/controller.h"

#include <algorithm>
#include <iterator>

namespace halvora {

namespace {

constexpr std::uint8_t kCommandPacket = 0x01;
constexpr std::uint8_t kEventPacket = 0x04;
constexpr std::uint8_t kCommandComplete = 0x0E;
constexpr std::uint8_t kLeMeta = 0x3E;
constexpr std::uint8_t kAdvertisingReport = 0x02;
constexpr std::uint8_t kUnknownCommand = 0x01;
constexpr std::uint8_t kDisallowed = 0x0C;
constexpr std::uint8_t kInvalidParameters = 0x12;
constexpr std::size_t kMostData = 31;

constexpr std::uint16_t kReset = 0x0C03;
constexpr std::uint16_t kReadCommands = 0x1002;
constexpr std::uint16_t kReadAddress = 0x1009;
constexpr std::uint16_t kEnableScan = 0x200C;

// One bit for each command of the table below, where the kernel asks for it.
constexpr std::array<std::uint8_t, 64> supportedCommands() {
  std::array<std::uint8_t, 64> bits{};
  bits[5] = 0xC0;   // set event mask, reset
  bits[14] = 0x28;  // read local version, local features
  bits[15] = 0x02;  // read address
  bits[25] = 0xF7;  // LE: event mask, buffer size, features, random address, advertising
  bits[26] = 0xCF;  // LE: scan response, advertise, scan; size and clearing of the accept list
  bits[27] = 0x03;  // LE: accept list, add and remove
  bits[28] = 0x08;  // LE: supported states
  return bits;
}
constexpr auto kSupportedCommands = supportedCommands();

}  // namespace

// A command: what follows the status in its answer, and what it does.
struct Controller::Command {
  std::uint16_t operation;
  std::size_t parameters;
  std::vector<std::uint8_t> rest = {};
  void (Controller::*act)(Parameters) = nullptr;
};

const Controller::Command Controller::kCommands[] = {
    {0x0C01, 8},  // set event mask
    {kReset, 0, {}, &Controller::reset},
    {0x1001, 0, {9, 0, 0, 9, 0xF1, 0x05, 0, 0}},  // version: Bluetooth 5.0
    {kReadCommands, 0},
    {0x1003, 0, {0, 0, 0, 0, 0x60, 0, 0, 0}},  // features: LE, and nothing else
    {kReadAddress, 0},
    {0x2001, 8},                            // set LE event mask
    {0x2002, 0, {27, 0, 8}},                // buffers
    {0x2003, 0, {0, 0, 0, 0, 0, 0, 0, 0}},  // LE features
    {0x2005, 6, {}, &Controller::setRandomAddress},
    {0x2006, 15, {}, &Controller::setAdvertisingParameters},
    {0x2007, 0, {0}},  // transmission power
    {0x2008, 32, {}, &Controller::setAdvertisingData},
    {0x2009, 32},  // set scan response
    {0x200A, 1, {}, &Controller::enableAdvertising},
    {0x200B, 7},  // set scan parameters
    {kEnableScan, 2, {}, &Controller::enableScan},
    {0x200F, 0, {8}},                                      // size of the accept list
    {0x2010, 0},                                           // clear it
    {0x2011, 7},                                           // add to it
    {0x2012, 7},                                           // remove from it
    {0x201C, 0, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 3, 0, 0}},  // states: every combination
};

void Controller::take(std::span<const std::uint8_t> packet) {
  if (packet.size() < 4 || packet[0] != kCommandPacket) return;
  const auto operation = static_cast<std::uint16_t>(packet[1] | packet[2] << 8);
  const Parameters parameters = packet.subspan(4);
  const auto* command = std::ranges::find(kCommands, operation, &Command::operation);
  if (command == std::end(kCommands)) return answer(operation, kUnknownCommand, {});
  if (parameters.size() < command->parameters) return answer(operation, kInvalidParameters, {});
  const bool isScan = operation == kEnableScan && parameters[0] != 0;
  if (isScan && isRefusing_) return answer(operation, kDisallowed, {});
  if (command->act != nullptr) (this->*command->act)(parameters);
  if (operation == kReadCommands) return answer(operation, 0, kSupportedCommands);
  if (operation == kReadAddress) return answer(operation, 0, address_);
  answer(operation, 0, command->rest);
}

void Controller::answer(std::uint16_t operation, std::uint8_t status,
                        std::span<const std::uint8_t> rest) {
  std::vector<std::uint8_t> event = {kEventPacket,
                                     kCommandComplete,
                                     static_cast<std::uint8_t>(4 + rest.size()),
                                     1,
                                     static_cast<std::uint8_t>(operation & 0xFF),
                                     static_cast<std::uint8_t>(operation >> 8),
                                     status};
  event.insert(event.end(), rest.begin(), rest.end());
  send_(event);
}

void Controller::reset(Parameters) {
  random_ = {};
  isScanning_ = false;
  reported_.clear();
  isAdvertising_ = false;
  own_ = {};
}

void Controller::setRandomAddress(Parameters parameters) {
  std::ranges::copy(parameters.first(random_.size()), random_.begin());
}

// Both ends of the interval come in units of 0.625 ms; the longer one is kept.
void Controller::setAdvertisingParameters(Parameters parameters) {
  interval_ = (parameters[2] | parameters[3] << 8) * 5 / 8;
  own_.kind = parameters[4];
  own_.isRandom = parameters[5] == 1;
}

void Controller::setAdvertisingData(Parameters parameters) {
  const std::size_t size = std::min<std::size_t>(parameters[0], kMostData);
  own_.data.assign(parameters.begin() + 1, parameters.begin() + 1 + static_cast<long>(size));
}

void Controller::enableAdvertising(Parameters parameters) {
  isAdvertising_ = parameters[0] != 0;
  if (isAdvertising_) ++begun_;
}

void Controller::enableScan(Parameters parameters) {
  isScanning_ = parameters[0] != 0;
  dropsRepeats_ = parameters[1] != 0;
  reported_.clear();
}

AirReport Controller::advertisement() const {
  AirReport report = own_;
  report.address = own_.isRandom ? random_ : address_;
  return report;
}

bool Controller::hear(const AirReport& report) {
  if (!isScanning_) return false;
  if (dropsRepeats_ && !reported_.insert(report.address).second) return false;
  const std::size_t size = std::min(report.data.size(), kMostData);
  std::vector<std::uint8_t> event = {kEventPacket,
                                     kLeMeta,
                                     static_cast<std::uint8_t>(12 + size),
                                     kAdvertisingReport,
                                     1,
                                     report.kind,
                                     static_cast<std::uint8_t>(report.isRandom)};
  event.insert(event.end(), report.address.begin(), report.address.end());
  event.push_back(static_cast<std::uint8_t>(size));
  event.insert(event.end(), report.data.begin(), report.data.begin() + static_cast<long>(size));
  event.push_back(static_cast<std::uint8_t>(report.rssi));
  send_(event);
  return true;
}

}  // namespace halvora
