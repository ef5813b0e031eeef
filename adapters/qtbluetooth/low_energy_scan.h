// SPDX-License-Identifier: Apache-2.0
// What a radio through Qt asks of Qt Bluetooth: the seam at which tests are the other side. Main
// thread.
#pragma once

#include <cstdint>
#include <span>

#include "halvora/platform/bluetooth.h"

namespace halvora {

/// Nothing is thrown back at whoever tells it.
class LowEnergyScanListener {
 public:
  virtual ~LowEnergyScanListener() = default;
  /// The radio has gained or lost power, or the right to be used.
  virtual void stateChanged(CentralState state) noexcept = 0;
  /// The data of one company in an advertisement, without the company's id.
  virtual void heard(std::uint16_t company, std::span<const std::uint8_t> rest) noexcept = 0;
  /// A scan has ended by itself, or could not begin.
  virtual void ended() noexcept = 0;
};

/// One scan of a phone, for one listener.
class LowEnergyScan {
 public:
  virtual ~LowEnergyScan() = default;
  /// Who is told from now on; none for nobody. Never within a call.
  virtual void setListener(LowEnergyScanListener* listener) = 0;
  virtual CentralState state() const = 0;
  /// Also without the right to: whether it is there by now shows in no other way.
  virtual void begin() = 0;
  virtual void end() = 0;
};

}  // namespace halvora
