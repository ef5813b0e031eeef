// SPDX-License-Identifier: Apache-2.0
#include "venue/air/system_transmitter.h"

#include "venue/air/bluez_advertiser.h"
#include "venue/air/system_loop.h"

namespace halvora {

namespace {

class SystemTransmitter final : public Transmitter {
 public:
  explicit SystemTransmitter(const std::string& busAddress)
      : advertiser_(loop_, loop_, busAddress) {}

  RunLoop& loop() override { return loop_; }
  void runUntil(const std::function<bool()>& isDone) override { runCommandUntil(loop_, isDone); }
  void open(const TransmitterSettings& settings) override { advertiser_.open(settings); }
  void show(std::span<const std::uint8_t> data) override { advertiser_.show(data); }
  void end() override { advertiser_.end(); }
  bool isBusy() const override { return advertiser_.isBusy(); }
  const std::string& failure() const override { return advertiser_.failure(); }

 private:
  PollRunLoop loop_;
  BluezAdvertiser advertiser_;
};

}  // namespace

std::unique_ptr<Transmitter> openSystemTransmitter(const std::string& busAddress) {
  return std::make_unique<SystemTransmitter>(busAddress);
}

std::unique_ptr<Advertiser> makeSystemAdvertiser(RunLoop& loop, Descriptors& descriptors,
                                                 const std::string& busAddress) {
  return std::make_unique<BluezAdvertiser>(loop, descriptors, busAddress);
}

}  // namespace halvora
