// SPDX-License-Identifier: Apache-2.0
#include "venue/show/show_senders.h"

#include <algorithm>
#include <variant>

#include "venue/show/scenario_schedule.h"

namespace halvora {

ShowSenders::ShowSenders(const Scenario& scenario, Duration end, Duration pause, std::size_t airs) {
  ScenarioSchedule schedule(scenario);
  bool isOneVenue = true;
  while (const auto moment = schedule.next(end)) {
    const auto* packet = std::get_if<PacketAction>(moment->action);
    if (packet == nullptr || formatOf(packet->data) != BroadcastFormat::valid) continue;
    const Broadcast fields = decodeBroadcast(packet->data);
    isOneVenue = isOneVenue && (!venueId_ || *venueId_ == fields.venueId);
    venueId_ = fields.venueId;
    for (std::size_t air = 0; air < airs; ++air) {
      const std::uint8_t number = transmitterNumber(fields.transmitter, air);
      note(transmitterKey(fields.applicationId, number), moment->time, pause);
    }
  }
  if (!isOneVenue) venueId_.reset();
}

void ShowSenders::note(const std::string& key, Duration time, Duration pause) {
  const auto sender = static_cast<std::size_t>(std::ranges::find(keys_, key) - keys_.begin());
  if (sender == keys_.size()) {
    keys_.push_back(key);
    stretches_.emplace_back();
  }
  auto& stretches = stretches_[sender];
  if (stretches.empty() || time - stretches.back().end > pause) {
    stretches.push_back({time, time});
  } else {
    stretches.back().end = time;
  }
}

bool ShowSenders::isSending(std::size_t sender, Duration from, Duration to) const {
  const auto& stretches = stretches_[sender];
  const auto after = std::ranges::upper_bound(stretches, from, {}, &Stretch::begin);
  return after != stretches.begin() && (after - 1)->end >= to;
}

}  // namespace halvora
