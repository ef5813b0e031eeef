// SPDX-License-Identifier: Apache-2.0
#include "venue/air/system_transmitter.h"

#include <exception>

#include "adapters/linux/poll_run_loop.h"
#include "venue/air/bluez_advertiser.h"

namespace halvora {

namespace {

/// A signal between a look at `isDone` and the wait would go unnoticed for as long as nothing else
/// happens.
constexpr Duration kLongestPause = milliseconds(200);

class SystemTransmitter final : public Transmitter {
 public:
  explicit SystemTransmitter(const std::string& busAddress)
      : advertiser_(loop_, loop_, busAddress) {}

  RunLoop& loop() override { return loop_; }
  void runUntil(const std::function<bool()>& isDone) override {
    const auto isOver = [&] { return isDone() || loop_.failures() > 0; };
    while (!loop_.runUntil(isOver, kLongestPause)) {
    }
    // A command that lost a turn has nothing true to say any more.
    if (loop_.failures() > 0) std::rethrow_exception(loop_.firstFailure());
  }
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

}  // namespace halvora
