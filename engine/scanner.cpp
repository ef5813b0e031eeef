// SPDX-License-Identifier: Apache-2.0
#include "engine/scanner.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "halvora/platform/bundle.h"
#include "halvora/platform/user_defaults.h"
#include "text/numbers.h"

namespace halvora {

namespace {

constexpr ScanOptions kScanOptions{.allowDuplicates = true};
constexpr Duration kCycle = milliseconds(1000);
constexpr Duration kVideoReadyDelay = milliseconds(4000);
/// Empty cycles, consecutive or not, after which the venue counts as left.
constexpr int kOutOfRangeLimit = 7;
/// A sequence that has come this far may begin again ...
constexpr std::uint16_t kWrapFrom = 60001;
/// ... below this.
constexpr std::uint16_t kWrapBelow = 56000;

constexpr std::uint32_t packedKey(std::uint32_t applicationId, std::uint32_t transmitter) {
  return applicationId << 8 | transmitter;
}

bool isNewer(std::uint16_t sequence, std::uint16_t current) {
  return sequence > current || (current >= kWrapFrom && sequence < kWrapBelow);
}

inline bool isLookInForce(std::span<const std::uint8_t> data, const PresenceState& state) {
  return state.hasCurrentBroadcast &&
         std::ranges::equal(data.first(kBroadcastKeySize), state.currentBroadcast);
}

}  // namespace

const char* textOf(BluetoothState state) {
  constexpr const char* kTexts[] = {"", "ok", "off", "notAuthorised"};
  static_assert(std::size(kTexts) == static_cast<std::size_t>(BluetoothState::notAuthorised) + 1);
  return kTexts[static_cast<std::size_t>(state)];
}

Scanner::Scanner(const Platform& platform, PresenceState& state, TimerSet& timers,
                 ScannerListener& listener, std::unique_ptr<AirGate> gate)
    : platform_(platform),
      state_(state),
      timers_(timers),
      listener_(listener),
      gate_(std::move(gate)) {}

void Scanner::start() {
  const bool granted = isPermissionGranted();
  state_.scanningAllowed = granted;
  publishStatus(granted ? BluetoothState::ok : BluetoothState::notAuthorised);
  if (granted) initBluetoothPermission();
  platform_.defaults->synchronize();
}

void Scanner::initBluetoothPermission() {
  timers_.after(kCycle, [this] { startScan(); });
  timers_.every(kCycle, [this] { restartScan(); });
  timers_.every(kCycle, [this] { resetRangeCount(); });
  timers_.after(kVideoReadyDelay, [this] { listener_.videoReady(); });
  cbCentralManager_ = platform_.bluetooth->makeManager(*this);
}

bool Scanner::isPermissionGranted() const {
  return platform_.bluetooth->authorization() == BluetoothAuthorization::allowedAlways;
}

void Scanner::setAllowedTransmitterIds(std::vector<std::string> ids) {
  allowedIds_ = std::move(ids);
  allowedKeys_.clear();
  for (const std::string& id : allowedIds_) {
    const std::size_t colon = id.find(':');
    if (colon == std::string::npos) continue;
    const std::int64_t application = integerValue(id);
    const std::int64_t transmitter = integerValue(std::string_view(id).substr(colon + 1));
    if (application < 0 || application > 0xFFFF || transmitter < 0 || transmitter > 0xFF) continue;
    // Only a text that is written just as a packet's own key can equal one.
    if (transmitterKey(static_cast<std::uint16_t>(application),
                       static_cast<std::uint8_t>(transmitter)) != id) {
      continue;
    }
    allowedKeys_.push_back(packedKey(static_cast<std::uint32_t>(application),
                                     static_cast<std::uint32_t>(transmitter)));
  }
  std::sort(allowedKeys_.begin(), allowedKeys_.end());
}

std::string Scanner::currentBroadcast() const {
  return state_.hasCurrentBroadcast ? NSDataToHex(state_.currentBroadcast) : std::string();
}

void Scanner::centralManagerDidUpdateState(CentralState state) {
  guard([this, state] {
    if (state == CentralState::poweredOn) {
      state_.scanningAllowed = true;
      publishStatus(BluetoothState::ok);
    } else {
      publishStatus(state == CentralState::unauthorised ? BluetoothState::notAuthorised
                                                        : BluetoothState::off);
    }
    platform_.defaults->synchronize();
    listener_.presenceChanged();
  });
}

void Scanner::publishStatus(BluetoothState state) {
  state_.bluetoothState = state;
  const Bundles& bundles = platform_.bundles;
  std::string status = state == BluetoothState::ok ? bundles.main.localizedString("outside_venue")
                       : state == BluetoothState::off
                           ? bundles.kit.localizedString("bluetooth_off")
                           : bundles.kit.localizedString("bluetooth_notAuthorised");
  platform_.defaults->set("bluetoothStatus", std::move(status));
}

void Scanner::didDiscoverPeripheral(const Advertisement& advertisement) {
  ++state_.broadcastCount;
  const PacketFate fate = advertisement.manufacturerData ? judge(*advertisement.manufacturerData)
                                                         : PacketFate::noManufacturerData;
  if (fate == PacketFate::engineGone) return;
  ++diagnostics_.counts[static_cast<std::size_t>(fate)];
}

PacketFate Scanner::judge(std::span<const std::uint8_t> data) {
  const BroadcastFormat format = formatOf(data);
  if (format == BroadcastFormat::otherMaker) return PacketFate::otherMaker;
  if (format == BroadcastFormat::tooShort) return PacketFate::tooShort;
  if (gate_) return judgeAtGate(HeardPacket(data));

  const std::uint16_t transmitter = data.back();
  const bool isVenueWide = transmitter == kVenueWideTransmitter;
  // Also by one that is not obeyed: a transmitter of another show nearby silences the venue-wide
  // one too.
  if (!isVenueWide) state_.transmitterFound = true;
  const auto applicationId = static_cast<std::uint16_t>(data[2] << 8 | data[3]);
  if (!isAllowed(applicationId, transmitter)) return PacketFate::notAllowed;
  if (isVenueWide && state_.transmitterFound && allowedIds_.empty()) return PacketFate::silenced;

  ++state_.fps;
  if (!state_.insideVenue) enterVenue();
  const auto sequence =
      static_cast<std::uint16_t>(data[kSequenceOffset] << 8 | data[kSequenceOffset + 1]);
  state_.liveSequence = sequence;
  if (!isNewer(sequence, state_.currentSequence)) return PacketFate::staleSequence;
  return isLookInForce(data, state_) ? takeNumber(sequence) : take(data, sequence);
}

// What follows is out of line: a packet that changes nothing, as most do, does not make room on the
// stack for it.

// The same road where the host asks for more than the newest packet: what is not believed is not
// there, neither for the venue-wide transmitter nor for the presence.
[[gnu::noinline]] PacketFate Scanner::judgeAtGate(const HeardPacket& packet) {
  const std::uint32_t transmitter = packet.data.back();
  const bool isVenueWide = transmitter == kVenueWideTransmitter;
  if (!isAllowed(packet.applicationId(), transmitter)) return PacketFate::notAllowed;
  if (isVenueWide && state_.transmitterFound && allowedIds_.empty()) return PacketFate::silenced;

  const AirGate* const gate = gate_.get();
  const AirTrust before = gate->trust();
  const AirVerdict verdict = gate_->judge(packet, timers_.now(), platform_.wallClock);
  if (verdict.act == AirVerdict::Act::doubt) return followTrust(before, PacketFate::doubted);

  if (!isVenueWide) state_.transmitterFound = true;
  ++state_.fps;
  enterVenue();
  state_.liveSequence = packet.sequence;
  const bool isNew =
      verdict.act == AirVerdict::Act::obey ||
      (verdict.act == AirVerdict::Act::pass && isNewer(packet.sequence, state_.currentSequence));
  if (isNew) {
    const PacketFate fate = isLookInForce(packet.data, state_) ? takeNumber(packet.sequence)
                                                               : take(packet.data, packet.sequence);
    // In the middle of a look the host may have gone, or made another gate.
    if (fate == PacketFate::engineGone || gate_.get() != gate) return fate;
    return followTrust(before, fate);
  }
  const bool isHeld = verdict.act == AirVerdict::Act::hold;
  return followTrust(before, isHeld ? PacketFate::doubted : PacketFate::staleSequence);
}

[[gnu::noinline]] void Scanner::enterVenue() {
  if (!std::exchange(state_.insideVenue, true)) listener_.presenceChanged();
}

void Scanner::setGate(std::unique_ptr<AirGate> gate) {
  const AirTrust before = trust();
  gate_ = std::move(gate);
  if (before == AirTrust::contested) listener_.contestEnded();
  if (before != trust()) listener_.airTrustChanged();
}

PacketFate Scanner::followTrust(AirTrust before, PacketFate fate) {
  if (gate_->trust() == before) return fate;
  listener_.airTrustChanged();
  if (before == AirTrust::contested) listener_.contestEnded();
  if (gate_->trust() != AirTrust::contested) return fate;
  const BroadcastBytes* const held = gate_->undisputed();
  state_.hasCurrentBroadcast = held != nullptr;
  if (held == nullptr) return listener_.contestBegan(nullptr);
  std::ranges::copy(std::span(*held).first<kBroadcastKeySize>(), state_.currentBroadcast.begin());
  const Broadcast undisputed = decodeBroadcast(*held);
  return listener_.contestBegan(&undisputed);
}

[[gnu::noinline]] PacketFate Scanner::take(std::span<const std::uint8_t> data,
                                           std::uint16_t sequence) {
  state_.currentSequence = sequence;
  const auto key = data.first(kBroadcastKeySize);
  ++state_.activeFPS;
  state_.hasFailed = false;
  std::ranges::copy(key, state_.currentBroadcast.begin());
  state_.hasCurrentBroadcast = true;
  const PacketFate fate = listener_.processEffect(decodeBroadcast(data));
  if (fate == PacketFate::failed) state_.hasFailed = true;
  return fate;
}

bool Scanner::isAllowed(std::uint32_t applicationId, std::uint32_t transmitter) const {
  return allowedIds_.empty() || std::binary_search(allowedKeys_.begin(), allowedKeys_.end(),
                                                   packedKey(applicationId, transmitter));
}

void Scanner::startScan() {
  // Without a manager it was not to be had when listening began.
  if (!cbCentralManager_ || !state_.scanningAllowed ||
      state_.bluetoothState != BluetoothState::ok) {
    return;
  }
  state_.hasCurrentBroadcast = false;
  cbCentralManager_->scanForPeripherals(kScanOptions);
}

void Scanner::restartScan() {
  if (!cbCentralManager_ || state_.bluetoothState != BluetoothState::ok) return;
  if (std::exchange(state_.hasFailed, false)) {
    // Its next packet is new again, whether it has a new number or not.
    state_.hasCurrentBroadcast = false;
    if (state_.currentSequence > 0) --state_.currentSequence;
    if (gate_) gate_->showAgain();
  }
  if (gate_ && changeGate([this] { gate_->refresh(timers_.now()); }) == PacketFate::engineGone) {
    return;
  }
  if (state_.lastFPS > 0) listener_.recievedSignal();
  listener_.showReceptionRate(state_.lastFPS);

  state_.broadcastCount = 0;
  if (state_.fps == 0 && state_.insideVenue) ++state_.outOfRangeCount;
  const bool hasLeft = state_.outOfRangeCount >= kOutOfRangeLimit && state_.insideVenue;
  if (hasLeft || state_.resetApp) {
    state_.resetApp = false;
    state_.outOfRangeCount = 0;
    if (std::exchange(state_.insideVenue, false)) listener_.presenceChanged();
    state_.currentSequence = 0;
    state_.hasCurrentBroadcast = false;
    state_.setupOnce = false;
    if (gate_) changeGate([this] { gate_->reset(timers_.now()); });
    listener_.dropShow();
    platform_.defaults->set("appID", std::int64_t{0});
    platform_.defaults->synchronize();
  }

  state_.lastFPS = std::exchange(state_.fps, 0);
  state_.lastActiveFPS = std::exchange(state_.activeFPS, 0);
  if (!state_.setupOnce) {
    state_.setupOnce = true;
    timers_.after(kVideoReadyDelay, [this] { listener_.videoReady(); });
  }
  cbCentralManager_->restartScan(kScanOptions);
}

void Scanner::resetRangeCount() { state_.transmitterFound = false; }

}  // namespace halvora
