// SPDX-License-Identifier: Apache-2.0
// Listens for transmitters: which packets are obeyed, and whether the phone is in the venue. A
// packet that brings nothing new is judged on its bytes and touches no heap. Owned by the engine;
// main thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/air_gate.h"
#include "engine/broadcast.h"
#include "halvora/diagnostics.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/platform.h"
#include "light/timer_set.h"

namespace halvora {

enum class BluetoothState : std::uint8_t { none, ok, off, notAuthorised };
/// "ok", "off", "notAuthorised", or empty before Bluetooth was asked for.
const char* textOf(BluetoothState state);

struct PresenceState {
  BluetoothState bluetoothState = BluetoothState::none;
  bool scanningAllowed = false;
  bool transmitterFound = false;
  bool insideVenue = false;
  /// Asks the next cycle to drop the show.
  bool resetApp = false;
  /// Whether the video's readiness timer has been started since the show was last dropped.
  bool setupOnce = false;
  bool hasCurrentBroadcast = false;
  /// The look in force was cut short: the next cycle forgets it, so that it is obeyed once more.
  bool hasFailed = false;
  BroadcastKeyBytes currentBroadcast{};
  std::uint16_t currentSequence = 0;
  std::uint16_t liveSequence = 0;
  int outOfRangeCount = 0;
  /// Advertisements of any kind, accepted packets and new looks since the last cycle, and the
  /// latter two of the cycle before.
  int broadcastCount = 0;
  int fps = 0;
  int activeFPS = 0;
  int lastFPS = 0;
  int lastActiveFPS = 0;
};

/// What the scanner's owner does with what is heard.
class ScannerListener {
 public:
  virtual ~ScannerListener() = default;
  /// `engineGone` if the scanner has been destroyed meanwhile.
  virtual PacketFate processEffect(const Broadcast& broadcast) = 0;
  virtual void recievedSignal() = 0;
  /// The number of packets accepted in the cycle before.
  virtual void showReceptionRate(int packets) = 0;
  /// Ends the show without a word to the host.
  virtual void dropShow() = 0;
  virtual void videoReady() = 0;
  /// Two transmitters contradict each other: what was undisputed is to be held, or nothing where
  /// that is null. `engineGone` if the scanner has been destroyed meanwhile.
  virtual PacketFate contestBegan(const Broadcast* /*undisputed*/) { return PacketFate::doubted; }
  virtual void contestEnded() {}
  /// The host may be told, but not within the call.
  virtual void airTrustChanged() {}
  /// Whether the phone is in the venue, or listening is allowed, may have changed. The host may be
  /// told, but not within the call.
  virtual void presenceChanged() {}
};

class Scanner : private CentralManagerDelegate {
 public:
  /// Without a gate whatever is newer is obeyed.
  Scanner(const Platform& platform, PresenceState& state, TimerSet& timers,
          ScannerListener& listener, std::unique_ptr<AirGate> gate = nullptr);

  /// Begins to listen if the user has allowed it; otherwise only says in the defaults that it is
  /// not allowed.
  void start();
  /// Starts the four timers and makes the central manager, which may ask the user for permission.
  void initBluetoothPermission();
  bool isPermissionGranted() const;

  /// The transmitter keys to obey; none means all.
  void setAllowedTransmitterIds(std::vector<std::string> ids);
  const std::vector<std::string>& allowedTransmitterIds() const { return allowedIds_; }

  /// The hexadecimal text of the look in force, empty for none.
  std::string currentBroadcast() const;
  const ScanDiagnostics& diagnostics() const { return diagnostics_; }
  /// Null where the air is taken exactly.
  const AirGate* gate() const { return gate_.get(); }
  AirTrust trust() const { return gate_ ? gate_->trust() : AirTrust::unproven; }
  /// In place of the one before, and of what that had learnt.
  void setGate(std::unique_ptr<AirGate> gate);
  /// Does what the system asks for. It knows nothing of exceptions: they end here, and are counted.
  template <class Act>
  void guard(const Act& act) {
    try {
      act();
    } catch (...) {
      ++diagnostics_.failedCalls;
    }
  }

  /// To be counted by whoever calls the host.
  std::uint64_t& failedCallbacks() { return diagnostics_.failedCallbacks; }

  void startScan();
  void restartScan();
  void resetRangeCount();

 private:
  void centralManagerDidUpdateState(CentralState state) override;
  void didDiscoverPeripheral(const Advertisement& advertisement) override;
  PacketFate judge(std::span<const std::uint8_t> data);
  PacketFate judgeAtGate(const HeardPacket& packet);
  /// Of the look in force only its number is taken.
  PacketFate takeNumber(std::uint16_t sequence) {
    state_.currentSequence = sequence;
    return PacketFate::sameBroadcast;
  }
  PacketFate take(std::span<const std::uint8_t> data, std::uint16_t sequence);
  /// Does to the gate what may end a contest, and tells of it.
  template <class Act>
  PacketFate changeGate(const Act& act) {
    const AirTrust before = gate_->trust();
    act();
    return followTrust(before, PacketFate::doubted);
  }
  void enterVenue();
  PacketFate followTrust(AirTrust before, PacketFate fate);
  bool isAllowed(std::uint32_t applicationId, std::uint32_t transmitter) const;
  void publishStatus(BluetoothState state);

  const Platform& platform_;
  PresenceState& state_;
  TimerSet& timers_;
  ScannerListener& listener_;
  std::vector<std::string> allowedIds_;
  /// The allowed ids that a packet can have, application id above the transmitter's byte, in order.
  std::vector<std::uint32_t> allowedKeys_;
  ScanDiagnostics diagnostics_;
  std::unique_ptr<AirGate> gate_;
  std::unique_ptr<CentralManager> cbCentralManager_;
};

}  // namespace halvora
