// SPDX-License-Identifier: Apache-2.0
// The devices of a phone in a crowd, as small as they can be: there are tens of thousands of them,
// so they keep nothing that an engine does not ask for again, and what is equal on many phones lies
// in one place. Phones on one loop share their ground; one thread at a time.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "adapters/virtual/virtual_devices.h"
#include "halvora/platform/application.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/user_defaults.h"
#include "pixelmap/seat_lut.h"
#include "venue/show/scenario.h"

namespace halvora {

/// Keys and values of defaults that are the same on many phones.
class SharedDefaults {
 public:
  struct Key {
    std::string name;
    /// Where a phone's number is unpacked for whoever asks.
    DefaultsValue unpacked;
  };

  /// The place of a key; lives as long as this.
  Key& key(std::string_view name);
  /// The one value that equals it; lives as long as this.
  const DefaultsValue& value(DefaultsValue value);

  /// Where a seat's position is unpacked.
  DefaultsValue xPos;
  DefaultsValue yPos;

 private:
  std::list<Key> keys_;
  /// A long show may write many texts.
  std::unordered_map<std::string, DefaultsValue> texts_;
  /// Arrays and dictionaries, which no show writes.
  std::list<DefaultsValue> others_;
};

/// What phones on one loop share. Loop and queues must outlive it. Nobody feels a simulated phone,
/// and none is counted: there are no haptics and no requests.
struct CrowdGround {
  CrowdGround(RunLoop& itsLoop, SerialQueues& itsQueues)
      : loop(itsLoop), queues(itsQueues), wallClock(itsLoop) {}

  RunLoop& loop;
  SerialQueues& queues;
  VirtualWallClock wallClock;
  VirtualCalendar calendar;
  SharedDefaults defaults;
};

struct CrowdSeat {
  SeatPosition at;
  /// Names live as long as the venue's map.
  std::string_view section;
  bool isStanding = false;
  std::string_view row = {};
  std::string_view name = {};
};

/// The seat that the phone's owner has chosen, and what the engine writes. Nothing takes the seat
/// away.
class CrowdDefaults final : public UserDefaults {
 public:
  CrowdDefaults(SharedDefaults& shared, const CrowdSeat& seat)
      : shared_(shared), seat_(seat), section_(shared.value(std::string(seat.section))) {}

  const DefaultsValue* find(std::string_view key) const override;
  void set(std::string_view key, DefaultsValue value) override;
  void remove(std::string_view key) override;
  void synchronize() override {}

 private:
  /// A number itself, anything else by its shared value.
  using Packed = std::variant<const DefaultsValue*, bool, std::int64_t, double, Date>;
  struct Entry {
    SharedDefaults::Key* key;
    Packed value;
  };

  std::vector<Entry>::const_iterator entryOf(std::string_view key) const;

  SharedDefaults& shared_;
  const CrowdSeat& seat_;
  const DefaultsValue& section_;
  /// Few enough to be looked through.
  std::vector<Entry> entries_;
};

class CrowdScreen final : public Screen {
 public:
  /// `size` must outlive it.
  CrowdScreen(const Size& size, double level) : size_(size), level_(level) {}
  Size bounds() const override { return size_; }
  double brightness() const override { return level_; }
  void setBrightness(double level) override {
    level_ = level < 0 ? 0 : level > 1 ? 1 : level;
    hasChanged_ = true;
  }
  float currentEDRHeadroom() const override { return 1; }
  /// Whether it was written since the last time that somebody asked.
  bool takeChange() { return std::exchange(hasChanged_, false); }

 private:
  const Size& size_;
  double level_;
  bool hasChanged_ = true;
};

class CrowdTorch final : public Torch {
 public:
  /// Hears of each change.
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void torchChanged() = 0;
  };

  explicit CrowdTorch(bool isFitted) : isFitted_(isFitted) {}
  bool hasTorch() const override { return isFitted_; }
  bool hasFlash() const override { return isFitted_; }
  void setOn(bool on) override {
    if (on == isOn_) return;
    isOn_ = on;
    if (observer_ != nullptr) observer_->torchChanged();
  }
  bool isOn() const { return isOn_; }
  /// At most one, which outlives the torch; null for none.
  void setObserver(Observer* observer) { observer_ = observer; }

 private:
  Observer* observer_ = nullptr;
  bool isFitted_;
  bool isOn_ = false;
};

/// An application with one engine in it.
class CrowdApplication final : public Application {
 public:
  void addObserver(ApplicationObserver& observer) override { observer_ = &observer; }
  void removeObserver(ApplicationObserver& observer) override {
    if (observer_ == &observer) observer_ = nullptr;
  }
  void setIdleTimerDisabled(bool /*disabled*/) override {}
  void setStatusBarHidden(bool /*hidden*/) override {}
  void dismissPresentedScreens() override {}
  bool canOpenSettings() const override { return false; }
  void openSettings() override {}
  void useAudioPlaybackCategory() override {}

  void becomeActive() {
    if (observer_ != nullptr) observer_->appDidBecomeActive();
  }
  void resignActive() {
    if (observer_ != nullptr) observer_->appWillResignActive();
  }

 private:
  ApplicationObserver* observer_ = nullptr;
};

/// A radio with one listener: a newer one takes the place of the one before.
class CrowdRadio final : public BluetoothCentral {
 public:
  CrowdRadio(RunLoop& loop, const ScenarioDevice& device)
      : loop_(loop), authorization_(device.authorization), state_(device.state) {}

  BluetoothAuthorization authorization() const override { return authorization_; }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;

  void setAuthorization(BluetoothAuthorization authorization) { authorization_ = authorization; }
  /// A change is reported at once; without power no scan goes on.
  void setState(CentralState state);
  void advertise(std::span<const std::uint8_t> manufacturerData);
  bool isScanning() const;

 private:
  class Manager;

  RunLoop& loop_;
  Manager* manager_ = nullptr;
  BluetoothAuthorization authorization_;
  CentralState state_;
};

}  // namespace halvora
