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

/// A show's times are written down with six places.
constexpr Duration kRounding = milliseconds(1);

void writeText(PrettyJsonWriter& writer, std::string_view text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void addAll(CueTally::Delays& delays, const CueTally::Delays& others) {
  for (const auto& [delay, phones] : others) delays[delay] += phones;
}

void writeShares(PrettyJsonWriter& writer, const CueTally::Delays& delays) {
  std::uint64_t count = 0;
  for (const auto& [delay, phones] : delays) count += phones;
  writer.Key("phones");
  writer.Uint64(count);
  auto at = delays.begin();
  std::uint64_t reached = 0;
  for (const auto& [share, name] : kNamedShares) {
    const std::uint64_t wanted = (count * static_cast<std::uint64_t>(share) + 99) / 100;
    // Greater shares are reached no sooner.
    for (; at != delays.end() && reached + at->second < wanted; ++at) reached += at->second;
    writer.Key(name);
    if (wanted == 0 || at == delays.end() || at->first == CueTally::kNever) {
      writer.Null();
    } else {
      writer.Uint(at->first);
    }
  }
}

// Its numbers may go on from the last one with the first.
bool isOf(const WatchedCue& cue, const AirPacket& packet) {
  if (!packet.broadcast) return false;
  const auto from = static_cast<std::uint16_t>(packet.broadcast->sequence - cue.firstSequence);
  return from <= static_cast<std::uint16_t>(cue.lastSequence - cue.firstSequence);
}

}  // namespace

void CueTally::add(const CueTally& other) {
  for (const auto& [section, delays] : other.sections) addAll(sections[section], delays);
}

// A controller may leave out a cue's first packets; the first that is on the air counts. Numbers
// come round in a long show, so a cue is looked for from its beginning until the next one's.
CueWatch::CueWatch(std::vector<WatchedCue> cues, const Air& air, std::span<const CrowdSeat> phones)
    : cues_(std::move(cues)), phones_(phones), cueOf_(air.looks().size(), kNoCue) {
  const std::span<const Sent> sent = air.sent();
  for (std::size_t cue = 0; cue < cues_.size(); ++cue) {
    const bool isLast = cue + 1 == cues_.size();
    const Duration end = isLast ? Duration::max() : cues_[cue + 1].begin;
    auto at = std::ranges::lower_bound(sent, cues_[cue].begin - kRounding, {}, &Sent::time);
    while (at != sent.end() && at->time < end && !isOf(cues_[cue], air.packet(*at))) ++at;
    if (at == sent.end() || at->time >= end || cueOf_[at->look] != kNoCue) continue;
    cueOf_[at->look] = static_cast<std::uint32_t>(cue);
  }
  delays_.assign(cues_.size() * phones_.size(), CueTally::kNever);
}

void CueWatch::add(std::uint32_t look, std::size_t phone, Duration now) {
  const std::uint32_t cue = cueOf_[look];
  if (cue == kNoCue) return;
  const auto delay = (now - cues_[cue].begin) / milliseconds(1);
  delays_[cue * phones_.size() + phone] =
      static_cast<std::uint16_t>(std::clamp<std::int64_t>(delay, 0, CueTally::kNever));
}

std::vector<CueTally> CueWatch::tallies(
    const std::function<bool(std::size_t, Duration)>& isOpen) const {
  std::vector<CueTally> tallies;
  for (std::size_t cue = 0; cue < cues_.size(); ++cue) {
    CueTally& tally = tallies.emplace_back(CueTally{cues_[cue].name, cues_[cue].begin});
    for (std::size_t phone = 0; phone < phones_.size(); ++phone) {
      if (!isOpen(phone, tally.begin)) continue;
      const std::string_view section = phones_[phone].section;
      auto found = tally.sections.find(section);
      if (found == tally.sections.end())
        found = tally.sections.emplace(section, CueTally::Delays{}).first;
      ++found->second[delays_[cue * phones_.size() + phone]];
    }
  }
  return tallies;
}

void writeCues(PrettyJsonWriter& writer, std::span<const CueTally> cues) {
  writer.StartArray();
  for (const CueTally& cue : cues) {
    CueTally::Delays all;
    for (const auto& [name, delays] : cue.sections) addAll(all, delays);
    writer.StartObject();
    writer.Key("cue");
    writeText(writer, cue.name);
    writer.Key("t");
    writer.Int64(cue.begin / milliseconds(1));
    writeShares(writer, all);
    writer.Key("sections");
    writer.StartArray();
    for (const auto& [name, delays] : cue.sections) {
      writer.StartObject();
      writer.Key("section");
      writeText(writer, name);
      writeShares(writer, delays);
      writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
  }
  writer.EndArray();
}

}  // namespace halvora
