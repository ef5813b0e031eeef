// SPDX-License-Identifier: Apache-2.0
// One Bluetooth adapter of a played show. The radio repeats a packet by itself, so only new ones
// are handed to it, no faster than it sends: of a map's frames the newest is kept. An adapter that
// is lost is said to be, tried again until it is back, and then has what is on the air by then.
// Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "venue/air/transmitter.h"
#include "venue/live/live_air.h"

namespace halvora {

class RadioAir final : public LiveAir {
 public:
  using Make = std::function<std::unique_ptr<Advertiser>()>;
  using Say = std::function<void(const std::string& line)>;

  /// How often an adapter is looked after, and a lost one tried again.
  static constexpr Duration kLook = milliseconds(100);
  static constexpr Duration kRetry = milliseconds(500);

  /// Opens the adapter. The loop outlives the air.
  RadioAir(Make make, TransmitterSettings settings, RunLoop& loop, Say say);

  void send(std::span<const std::uint8_t> data, bool isRepeat) override;
  void end();

  bool isBusy() const { return advertiser_ && advertiser_->isBusy(); }
  /// Why it is not there, while it is not.
  const std::string& failure() const;
  const std::string& adapter() const { return settings_.adapter; }
  /// Looks that gave way to a newer one.
  std::uint64_t leftOut() const { return leftOut_; }

 private:
  void open();
  void look();
  void lose(const std::string& why);
  void pump();

  Make make_;
  const TransmitterSettings settings_;
  RunLoop& loop_;
  Say say_;
  std::unique_ptr<Advertiser> advertiser_;
  std::string failure_;
  Duration lostAt_{};
  /// It was lost, and is not back yet.
  bool isLost_ = false;
  std::vector<std::uint8_t> newest_;
  bool isWaiting_ = false;
  bool hasShown_ = false;
  Duration nextShow_{};
  std::uint64_t leftOut_ = 0;
  Timer look_;
  Timer pump_;
};

}  // namespace halvora
