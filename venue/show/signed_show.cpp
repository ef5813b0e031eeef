// SPDX-License-Identifier: Apache-2.0
#include "venue/show/signed_show.h"

#include <algorithm>
#include <utility>

#include "engine/signed_broadcast.h"

namespace halvora {

namespace {

/// An occurrence of a line and those after it in the same minute.
struct Stretch {
  std::uint64_t first = 0;
  std::uint64_t count = 0;
  std::uint32_t epoch = 0;
};

std::uint32_t epochAt(Date begin, Duration time) {
  return epochOf({begin.secondsSince1970 + toSeconds(time)});
}

Stretch stretchFrom(const ScenarioLine& line, std::uint64_t first, Date begin, Duration end) {
  Stretch stretch{first, 0, epochAt(begin, line.timeOf(first).value_or(Duration{}))};
  for (auto time = line.timeOf(first); time && *time <= end; time = line.timeOf(first)) {
    if (epochAt(begin, *time) != stretch.epoch) break;
    ++stretch.count;
    ++first;
  }
  return stretch;
}

ScenarioLine lineOf(const ScenarioLine& line, const Stretch& stretch, const Broadcast& fields,
                    MessageCode& code) {
  const auto data = signBroadcast(fields, stretch.epoch, code);
  ScenarioLine made;
  made.number = line.number;
  made.action = PacketAction{{data.begin(), data.end()}};
  made.at = line.at + line.every * static_cast<double>(stretch.first);
  if (stretch.count > 1) {
    made.every = line.every;
    // Half a step further, so that no rounding loses the last.
    made.until = made.at + line.every * (static_cast<double>(stretch.count) - 0.5);
  }
  return made;
}

}  // namespace

Scenario signedShow(const Scenario& scenario, MessageCode& code, Date begin, Duration end) {
  Scenario made;
  made.device = scenario.device;
  for (const ScenarioLine& line : scenario.lines) {
    const auto* packet = std::get_if<PacketAction>(&line.action);
    const bool isPlain = packet != nullptr && formatOf(packet->data) == BroadcastFormat::valid &&
                         packet->data.size() != kSignedBroadcast;
    if (!isPlain) {
      made.lines.push_back(line);
      continue;
    }
    const Broadcast fields = decodeBroadcast(packet->data);
    std::uint64_t first = 0;
    do {
      const Stretch stretch = stretchFrom(line, first, begin, end);
      made.lines.push_back(lineOf(line, stretch, fields, code));
      first += std::max<std::uint64_t>(stretch.count, 1);
    } while (first < line.occurrences() && line.timeOf(first).value_or(end) < end);
  }
  // Later minutes of one line may come after the beginning of the next.
  std::ranges::stable_sort(made.lines, {}, &ScenarioLine::at);
  return made;
}

}  // namespace halvora
