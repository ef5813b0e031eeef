// SPDX-License-Identifier: Apache-2.0
// Where a played show's packets go: one transmitter each. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"
#include "halvora/platform/run_loop.h"
#include "venue/base/outside.h"

namespace halvora {

/// A packet as it goes on the air.
using PacketEncoder = std::function<std::vector<std::uint8_t>(const Broadcast& packet)>;

class LiveAir {
 public:
  virtual ~LiveAir() = default;
  /// A new look, or the one that is on the air, again.
  virtual void send(std::span<const std::uint8_t> data, bool isRepeat) = 0;
};

/// Every packet as a line of JSON at its time, repeats too.
class LineAir final : public LiveAir {
 public:
  /// Times count from the making. All of it outlives the air.
  LineAir(RunLoop& loop, const Output& output) : loop_(loop), output_(output), begin_(loop.now()) {}

  void send(std::span<const std::uint8_t> data, bool isRepeat) override;
  bool isWritable() const { return isWritable_; }

 private:
  RunLoop& loop_;
  const Output& output_;
  const Duration begin_;
  bool isWritable_ = true;
};

}  // namespace halvora
