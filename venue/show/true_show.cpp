// SPDX-License-Identifier: Apache-2.0
#include "venue/show/true_show.h"

#include <algorithm>
#include <numeric>

#include "venue/show/scenario_schedule.h"

namespace halvora {

using Moment = TrueShow::Moment;

namespace {

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
  bySequence_.resize(moments_.size());
  std::iota(bySequence_.begin(), bySequence_.end(), std::size_t{0});
  std::ranges::stable_sort(bySequence_, {},
                           [this](std::size_t at) { return moments_[at].fields.sequence; });
}

const Moment* TrueShow::at(Duration time) const {
  const auto after = std::ranges::upper_bound(moments_, time, {}, &Moment::time);
  return after == moments_.begin() ? nullptr : &*(after - 1);
}

std::optional<Duration> TrueShow::firstTimeOf(std::span<const std::uint8_t, kBroadcastKeySize> look,
                                              std::uint16_t sequence) const {
  const auto sequenceOf = [this](std::size_t at) { return moments_[at].fields.sequence; };
  auto at = std::ranges::lower_bound(bySequence_, sequence, {}, sequenceOf);
  for (; at != bySequence_.end() && sequenceOf(*at) == sequence; ++at) {
    const Moment& one = moments_[*at];
    if (std::equal(look.begin(), look.end(), one.data.begin())) return one.time;
  }
  return std::nullopt;
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
