// SPDX-License-Identifier: Apache-2.0
// One advertisement of the system's Bluetooth daemon: an object on a connection of our own, whose
// data the daemon reads again whenever it is told of a change. It ends with the connection, so a
// tool that dies leaves nothing on the air. Owned by the system's transmitter; main thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/linux/bus/bus_connection.h"
#include "venue/air/transmitter.h"

namespace halvora {

class BluezAdvertiser final : public Advertiser {
 public:
  /// On the system's bus, or the one at `busAddress`.
  BluezAdvertiser(RunLoop& loop, Descriptors& descriptors, std::string busAddress = {})
      : connection_(loop, descriptors), busAddress_(std::move(busAddress)) {}

  void open(const TransmitterSettings& settings) override;
  void show(std::span<const std::uint8_t> manufacturerData) override;
  void end() override;
  bool isBusy() const override { return isBusy_; }
  const std::string& failure() const override { return failure_; }

  // What the daemon reads.
  const std::vector<std::uint8_t>& data() const { return data_; }
  const TransmitterSettings& settings() const { return settings_; }

 private:
  struct Adapter {
    std::string name;
    std::string path;
    bool isPowered = false;
    bool canAdvertise = false;
  };
  using Handler = void (BluezAdvertiser::*)(sd_bus_message*);
  static int handleRelease(sd_bus_message* message, void* self, sd_bus_error* error) noexcept;
  static const sd_bus_vtable kTable[];

  void call(const BusMessage& message, Handler answered);
  void takeObjects(sd_bus_message* message);
  void takeRegistered(sd_bus_message* message);
  void takeUnregistered(sd_bus_message* message);
  void ownerChanged(std::string_view now);
  void busLost();
  void choose(const std::vector<Adapter>& adapters);
  void watchAdapter();
  void takeRemoved(sd_bus_message* message);
  void takeChanged(sd_bus_message* message);
  void tellChange();
  void fail(std::string why);

  BusConnection connection_;
  const std::string busAddress_;
  TransmitterSettings settings_;
  std::vector<std::uint8_t> data_;
  /// The daemon's own name on the bus, once it has answered.
  std::string owner_;
  /// The path of the one that is used.
  std::string adapter_;
  bool isBusy_ = false;
  /// The daemon has the advertisement, and may be told of changes.
  bool isOnAir_ = false;
  /// Its data has changed since the daemon was asked to take it.
  bool isChanged_ = false;
  std::string failure_;
  BusSlot ownerMatch_;
  BusSlot removedMatch_;
  BusSlot changedMatch_;
  BusSlot object_;
  BusSlot answer_;
};

}  // namespace halvora
