// SPDX-License-Identifier: Apache-2.0
#include "venue/show/true_show.h"

#include <algorithm>
#include <chrono>

#include "venue/show/scenario_schedule.h"

namespace halvora {

using Moment = TrueShow::Moment;

namespace {

BroadcastKeyBytes lookOf(const Moment& moment) {
  BroadcastKeyBytes look{};
  std::copy_n(moment.data.begin(), look.size(), look.begin());
  return look;
}

bool isSame(const Moment& moment, const std::optional<BroadcastKeyBytes>& look) {
  if (!look) return moment.fields.mode == 0;
  return std::equal(look->begin(), look->end(), moment.data.begin());
}

}  // namespace

TrueShow::TrueShow(const Scenario& scenario, Duration end) {
  ScenarioSchedule schedule(scenario);
  while (const auto moment = schedule.next(end)) {
    const auto* packet = std::get_if<PacketAction>(moment->action);
    if (packet == nullptr || formatOf(packet->data) != BroadcastFormat::valid) continue;
    // Repeats are no news.
    if (!moments_.empty() && moments_.back().data == packet->data) continue;
    moments_.push_back({moment->time, packet->data, decodeBroadcast(packet->data)});
  }
  for (std::size_t at = 0; at < moments_.size(); ++at) {
    if (at == 0 || lookOf(moments_[at]) != lookOf(moments_[at - 1])) byLook_.push_back(at);
  }
  std::ranges::stable_sort(byLook_, {}, [this](std::size_t at) { return lookOf(moments_[at]); });
}

const Moment* TrueShow::at(Duration time) const {
  const auto after = std::ranges::upper_bound(moments_, time, {}, &Moment::time);
  return after == moments_.begin() ? nullptr : &*(after - 1);
}

std::optional<Duration> TrueShow::timeOf(const BroadcastKeyBytes& look, std::uint16_t sequence,
                                         const std::optional<BroadcastKeyBytes>& before,
                                         Duration near) const {
  const auto lookAt = [this](std::size_t at) { return lookOf(moments_[at]); };
  std::optional<Duration> nearest;
  auto step = std::ranges::lower_bound(byLook_, look, {}, lookAt);
  for (; step != byLook_.end() && lookAt(*step) == look; ++step) {
    if (before && (*step == 0 || lookAt(*step - 1) != *before)) continue;
    const Moment& one = moments_[*step];
    if (one.fields.sequence == sequence) return one.time;
    if (!nearest || std::chrono::abs(one.time - near) < std::chrono::abs(*nearest - near)) {
      nearest = one.time;
    }
  }
  return nearest;
}

std::optional<Duration> TrueShow::lastShown(const std::optional<BroadcastKeyBytes>& look,
                                            Duration from, Duration to) const {
  Duration until = to;
  const auto after = std::ranges::upper_bound(moments_, to, {}, &Moment::time);
  for (auto moment = after; moment != moments_.begin();) {
    --moment;
    if (isSame(*moment, look)) return until;
    if (moment->time <= from) return std::nullopt;
    until = moment->time;
  }
  return look ? std::nullopt : std::optional(until);
}

}  // namespace halvora
