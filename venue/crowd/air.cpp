// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/air.h"

#include <algorithm>
#include <map>
#include <span>
#include <tuple>
#include <utility>

#include "venue/show/scenario_schedule.h"

namespace halvora {

namespace {

using Look = BroadcastKeyBytes;
/// Application id and number of a transmitter.
using TransmitterId = std::pair<std::uint16_t, std::uint16_t>;

TransmitterId idOf(const Broadcast& broadcast) {
  return {broadcast.applicationId, broadcast.transmitter};
}

// The finishing step of SplitMix64 (Steele, Lea, Flood 2014): every bit in changes half of those
// out.
std::uint64_t spread(std::uint64_t bits) {
  bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9U;
  bits = (bits ^ bits >> 27) * 0x94D049BB133111EBU;
  return bits ^ bits >> 31;
}

// The upper and the lower half of a number as shares of 1, the latter excluded.
double upperShare(std::uint64_t bits) { return static_cast<double>(bits >> 32) / 4294967296.0; }
double lowerShare(std::uint64_t bits) {
  return static_cast<double>(bits & 0xFFFFFFFFU) / 4294967296.0;
}

}  // namespace

std::uint64_t mixed(std::uint64_t seed, std::uint64_t one, std::uint64_t other) {
  constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15U;
  return spread(spread(spread(seed + kGolden) + one + kGolden) + other + kGolden);
}

bool isLost(std::uint64_t chance, double loss) { return upperShare(chance) < loss; }

std::optional<Air> Air::of(const Scenario& scenario, const AirSettings& settings, Duration end) {
  Air air(settings);
  if (!air.expand(scenario, end)) return std::nullopt;
  if (settings.controller > Duration::zero() && !air.sendAsControllersDo(end)) return std::nullopt;
  if (settings.interval > Duration::zero() && !air.addRepeats(end)) return std::nullopt;
  for (const Sent& sent : air.sent_) {
    if (air.packets_[sent.packet].broadcast) air.showTimes_.push_back(sent.time);
  }
  air.silenceTheDead();
  air.countLooks();
  return air;
}

bool Air::expand(const Scenario& scenario, Duration end) {
  constexpr std::uint32_t kNew = UINT32_MAX;
  std::vector<std::uint32_t> packetOf(scenario.lines.size(), kNew);
  ScenarioSchedule schedule(scenario);
  while (const auto moment = schedule.next(end)) {
    const auto* action = std::get_if<PacketAction>(moment->action);
    if (action == nullptr) continue;
    if (sent_.size() == kMostSent) return false;
    std::uint32_t& packet = packetOf[moment->line];
    if (packet == kNew) {
      packet = static_cast<std::uint32_t>(packets_.size());
      const bool isOurs = formatOf(action->data) == BroadcastFormat::valid;
      packets_.push_back({moment->order, action->data,
                          isOurs ? std::optional(decodeBroadcast(action->data)) : std::nullopt});
    }
    sent_.push_back({moment->time, packet, 0});
  }
  return true;
}

bool Air::addRepeats(Duration end) {
  std::vector<Sent> repeats;
  std::map<TransmitterId, Sent> last;
  const auto repeat = [&](const Sent& sent, Duration until) {
    for (Duration time = sent.time + settings_.interval; time < until; time += settings_.interval) {
      if (sent_.size() + repeats.size() == kMostSent) return false;
      repeats.push_back({time, sent.packet, 0});
    }
    return true;
  };
  for (const Sent& sent : sent_) {
    const auto& broadcast = packets_[sent.packet].broadcast;
    if (!broadcast) continue;
    const auto [before, isFirst] = last.try_emplace(idOf(*broadcast), sent);
    if (isFirst) continue;
    if (!repeat(before->second, sent.time)) return false;
    before->second = sent;
  }
  for (const auto& [id, sent] : last) {
    if (!repeat(sent, end)) return false;
  }
  sent_.insert(sent_.end(), repeats.begin(), repeats.end());
  std::stable_sort(sent_.begin(), sent_.end(),
                   [](const Sent& one, const Sent& other) { return one.time < other.time; });
  return true;
}

bool Air::sendAsControllersDo(Duration end) {
  std::vector<Sent> carried;
  std::map<TransmitterId, std::vector<Sent>> shown;
  for (const Sent& sent : sent_) {
    const auto& broadcast = packets_[sent.packet].broadcast;
    if (broadcast) {
      shown[idOf(*broadcast)].push_back(sent);
    } else {
      carried.push_back(sent);
    }
  }
  for (const auto& [id, packets] : shown) {
    std::size_t newest = 0;
    for (Duration time = packets.front().time; time < end; time += settings_.controller) {
      while (newest + 1 < packets.size() && packets[newest + 1].time <= time) ++newest;
      if (carried.size() == kMostSent) return false;
      carried.push_back({time, packets[newest].packet, 0});
    }
  }
  sent_ = std::move(carried);
  std::ranges::stable_sort(sent_, {}, &Sent::time);
  return true;
}

void Air::silenceTheDead() {
  std::erase_if(sent_, [this](const Sent& sent) {
    const auto& broadcast = packets_[sent.packet].broadcast;
    return broadcast && std::ranges::any_of(settings_.dead, [&](const DeadTransmitter& one) {
             return one.transmitter == broadcast->transmitter && sent.time >= one.from;
           });
  });
}

void Air::countLooks() {
  struct Shown {
    Look look{};
    std::uint32_t number = 0;
  };
  std::map<TransmitterId, Shown> shown;
  for (Sent& sent : sent_) {
    const AirPacket& packet = packets_[sent.packet];
    if (!packet.broadcast) continue;
    Look look;
    std::copy_n(packet.data.begin(), look.size(), look.begin());
    const auto same = std::find_if(shown.begin(), shown.end(), [&](const auto& transmitter) {
      return transmitter.second.look == look;
    });
    if (same != shown.end()) {
      sent.look = same->second.number;
    } else {
      sent.look = static_cast<std::uint32_t>(looks_.size());
      looks_.push_back(sent.time);
    }
    shown[idOf(*packet.broadcast)] = {look, sent.look};
  }
}

bool Air::isInReach(const AirPacket& packet, SeatPosition seat) const {
  if (!packet.broadcast) return true;
  const auto reach = std::find_if(settings_.reaches.begin(), settings_.reaches.end(),
                                  [&](const TransmitterReach& one) {
                                    return one.transmitter == packet.broadcast->transmitter;
                                  });
  if (reach == settings_.reaches.end()) return true;
  const auto x = static_cast<double>(seat.x) - static_cast<double>(reach->at.x);
  const auto y = static_cast<double>(seat.y) - static_cast<double>(reach->at.y);
  return x * x + y * y <= reach->radius * reach->radius;
}

bool Air::isInZone(const AirPacket& packet, std::string_view section) const {
  if (!packet.broadcast) return true;
  bool isAnywhere = true;
  for (const TransmitterZone& zone : settings_.zones) {
    if (zone.transmitter != packet.broadcast->transmitter) continue;
    if (zone.section == section) return true;
    isAnywhere = false;
  }
  return isAnywhere;
}

std::optional<Duration> Air::arrival(std::size_t sent, std::uint32_t phone, SeatPosition seat,
                                     std::string_view section) const {
  const Sent& one = sent_[sent];
  if (!settings_.zones.empty() && !isInZone(packets_[one.packet], section)) return std::nullopt;
  if (!settings_.reaches.empty() && !isInReach(packets_[one.packet], seat)) return std::nullopt;
  if (settings_.loss <= 0 && settings_.jitter <= Duration::zero()) return one.time;
  const std::uint64_t chance = mixed(settings_.seed, phone, sent);
  if (isLost(chance, settings_.loss)) return std::nullopt;
  const auto late = static_cast<std::int64_t>(lowerShare(chance) *
                                              static_cast<double>(settings_.jitter.count() + 1));
  return one.time + Duration(late);
}

}  // namespace halvora
