// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/cue_watch.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace halvora {

namespace {

constexpr std::pair<int, const char*> kNamedShares[] = {
    {50, "shownBy50"}, {95, "shownBy95"}, {99, "shownBy99"}};

void writeText(PrettyJsonWriter& writer, std::string_view text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

}  // namespace

// A controller may leave out a cue's first packets; the first that is on the air counts.
CueWatch::CueWatch(std::vector<WatchedCue> cues, const Air& air, std::span<const CrowdSeat> phones)
    : cues_(std::move(cues)), phones_(phones), cueOf_(air.looks().size(), kNoCue) {
  std::map<std::uint16_t, std::uint32_t> lookOf;
  for (const Sent& sent : air.sent()) {
    const auto& broadcast = air.packet(sent).broadcast;
    if (broadcast) lookOf.try_emplace(broadcast->sequence, sent.look);
  }
  for (std::size_t cue = 0; cue < cues_.size(); ++cue) {
    const auto first = lookOf.lower_bound(cues_[cue].firstSequence);
    if (first == lookOf.end() || first->first > cues_[cue].lastSequence) continue;
    if (cueOf_[first->second] == kNoCue) cueOf_[first->second] = static_cast<std::uint32_t>(cue);
  }
  delays_.assign(cues_.size() * phones_.size(), kNever);
}

void CueWatch::add(std::uint32_t look, std::size_t phone, Duration now) {
  const std::uint32_t cue = cueOf_[look];
  if (cue == kNoCue) return;
  const auto delay = (now - cues_[cue].begin) / milliseconds(1);
  delays_[cue * phones_.size() + phone] =
      static_cast<std::uint16_t>(std::clamp<std::int64_t>(delay, 0, kNever));
}

void CueWatch::writeShares(PrettyJsonWriter& writer, std::vector<std::uint16_t> delays) const {
  writer.Key("phones");
  writer.Uint64(delays.size());
  std::ranges::sort(delays);
  for (const auto& [share, name] : kNamedShares) {
    const std::size_t wanted = (delays.size() * static_cast<std::size_t>(share) + 99) / 100;
    writer.Key(name);
    if (wanted == 0 || delays[wanted - 1] == kNever) {
      writer.Null();
    } else {
      writer.Uint(delays[wanted - 1]);
    }
  }
}

void CueWatch::write(PrettyJsonWriter& writer,
                     const std::function<bool(std::size_t, Duration)>& isOpen) const {
  writer.StartArray();
  for (std::size_t cue = 0; cue < cues_.size(); ++cue) {
    std::vector<std::uint16_t> all;
    // By name, whatever the order of the seats.
    std::map<std::string_view, std::vector<std::uint16_t>> sections;
    for (std::size_t phone = 0; phone < phones_.size(); ++phone) {
      if (!isOpen(phone, cues_[cue].begin)) continue;
      const std::uint16_t delay = delays_[cue * phones_.size() + phone];
      all.push_back(delay);
      sections[phones_[phone].section].push_back(delay);
    }
    writer.StartObject();
    writer.Key("cue");
    writeText(writer, cues_[cue].name);
    writer.Key("t");
    writer.Int64(cues_[cue].begin / milliseconds(1));
    writeShares(writer, std::move(all));
    writer.Key("sections");
    writer.StartArray();
    for (auto& [name, delays] : sections) {
      writer.StartObject();
      writer.Key("section");
      writeText(writer, name);
      writeShares(writer, std::move(delays));
      writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
  }
  writer.EndArray();
}

}  // namespace halvora
