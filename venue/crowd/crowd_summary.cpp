// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_summary.h"

#include <algorithm>
#include <cmath>

#include "venue/base/json_buffer.h"
#include "venue/base/json_line.h"

namespace halvora {

namespace {

using PrettyWriter = PrettyJsonWriter;

constexpr int kShares[] = {50, 95, 99};

double shareOf(double part, double whole) { return whole > 0 ? part / whole : 0; }

void addNumber(PrettyWriter& writer, const char* key, double value) {
  const std::string text = levelText(value);
  writer.Key(key);
  writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
}
void addNumber(PrettyWriter& writer, const char* key, std::uint64_t value) {
  writer.Key(key);
  writer.Uint64(value);
}
void addOptional(PrettyWriter& writer, const char* key, const std::optional<double>& value) {
  if (value) return addNumber(writer, key, *value);
  writer.Key(key);
  writer.Null();
}
void addMilliseconds(PrettyWriter& writer, const char* key, const std::optional<Duration>& time) {
  writer.Key(key);
  if (time) {
    writer.Int64(*time / milliseconds(1));
  } else {
    writer.Null();
  }
}
void addText(PrettyWriter& writer, const char* key, std::string_view text) {
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

template <class Body>
void addObject(PrettyWriter& writer, const char* key, const Body& body) {
  writer.Key(key);
  writer.StartObject();
  body();
  writer.EndObject();
}

// The greatest distance of one channel if all the error lay in it.
double levelsOf(std::uint32_t squaredError) { return std::sqrt(static_cast<double>(squaredError)); }

void addFlashes(PrettyWriter& writer, const FlashFigures& figures) {
  addNumber(writer, "general", static_cast<std::uint64_t>(figures.general.flashes));
  addNumber(writer, "red", static_cast<std::uint64_t>(figures.red.flashes));
  addNumber(writer, "at", toSeconds(figures.at()));
}

// Three channels a phone.
std::uint64_t valuesOf(std::uint64_t phones) { return phones * 3; }

void writeMapFrame(PrettyWriter& writer, const CrowdMapFrame& frame) {
  writer.StartObject();
  addMilliseconds(writer, "t", frame.time);
  addNumber(writer, "frame", static_cast<std::uint64_t>(frame.frame));
  addOptional(writer, "psnr", psnr(frame.squaredError, valuesOf(frame.phones)));
  addNumber(writer, "worst", levelsOf(frame.worstError));
  writer.EndObject();
}

void writeMap(PrettyWriter& writer, const std::vector<CrowdMapFrame>& frames,
              std::span<const CrowdSeat> phones) {
  std::uint64_t exact = 0;
  std::uint64_t squaredError = 0;
  std::uint64_t values = 0;
  const CrowdMapFrame* worst = nullptr;
  for (const CrowdMapFrame& frame : frames) {
    exact += frame.squaredError == 0 ? 1 : 0;
    squaredError += frame.squaredError;
    values += valuesOf(frame.phones);
    if (worst == nullptr || frame.worstError > worst->worstError) worst = &frame;
  }
  addNumber(writer, "frames", std::uint64_t{frames.size()});
  addNumber(writer, "exact", exact);
  addNumber(writer, "squaredError", squaredError);
  addOptional(writer, "psnr", psnr(squaredError, values));
  if (worst != nullptr && worst->worstError > 0) {
    addObject(writer, "worstSeat", [&] {
      const CrowdSeat& seat = phones[worst->worstPhone];
      addText(writer, "section", seat.section);
      addNumber(writer, "x", static_cast<double>(seat.at.x));
      addNumber(writer, "y", static_cast<double>(seat.at.y));
      addMilliseconds(writer, "t", worst->time);
      addNumber(writer, "levels", levelsOf(worst->worstError));
    });
  }
  writer.Key("perFrame");
  writer.StartArray();
  for (const CrowdMapFrame& frame : frames) writeMapFrame(writer, frame);
  writer.EndArray();
}

}  // namespace

std::optional<double> psnr(std::uint64_t squaredError, std::uint64_t values) {
  if (squaredError == 0 || values == 0) return std::nullopt;
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(values) /
                         static_cast<double>(squaredError));
}

CrowdSummary::CrowdSummary(std::span<const CrowdSeat> phones)
    : phones_(phones), sections_(phones), field_(sections_.count()) {}

void CrowdSummary::add(const CrowdSlice& slice) {
  for (const ClosedLook& look : slice.closedLooks) addLook(look);
  for (const CrowdFrame& frame : slice.frames) addFrame(frame);
  for (std::size_t at = 0; at < slice.watches.size(); ++at) {
    field_.add(slice.watches[at],
               std::span(slice.field).subspan(at * sections_.count(), sections_.count()));
  }
  packets_.add(slice.packets);
  phoneCurve_.take(slice.phoneCurve);
}

void CrowdSummary::addLook(const ClosedLook& look) {
  ++looks_;
  for (std::size_t at = 0; at < std::size(kShares); ++at) {
    const std::uint64_t wanted = (look.phones * static_cast<std::uint64_t>(kShares[at]) + 99) / 100;
    const auto time = look.phones > 0 ? look.delays.whenShown(wanted) : std::nullopt;
    if (time) {
      reaches_[at].times.push_back(*time);
    } else {
      ++reaches_[at].never;
    }
  }
}

void CrowdSummary::addFrame(const CrowdFrame& frame) {
  ++frames_;
  const FrameCounts& counts = frame.counts;
  mostTorches_ = std::max(mostTorches_, counts.torches);
  mostLost_ = std::max(mostLost_, counts.lost);
  lost_ += counts.lost;
  isLostNow_ = counts.lost > 0;
  if (isLostNow_) lastLost_ = frame.time;
  if (frame.isShowOnAir) {
    lit_ += counts.open;
    dark_ += counts.open - counts.showing;
    const double share = shareOf(counts.open - counts.showing, counts.open);
    if (share > darkest_) {
      darkest_ = share;
      darkestTime_ = frame.time;
    }
  }
  if (frame.mapFrame && counts.compared > 0) {
    map_.push_back({frame.time, *frame.mapFrame, counts.compared, counts.squaredError,
                    counts.worstError, counts.worstPhone});
  }
}

void CrowdSummary::writeFlashes(PrettyWriter& writer, const CrowdEnd& end) const {
  addObject(writer, "phone", [&] { addFlashes(writer, end.phoneFlashes); });
  addObject(writer, "crowd", [&] { addFlashes(writer, field_.hall()); });
  addObject(writer, "section", [&] {
    const FieldMeter::Worst worst = field_.worstSection();
    addText(writer, "name", nameOfSection(worst.section));
    addFlashes(writer, worst.figures);
  });
}

void CrowdSummary::writeLooks(PrettyWriter& writer) const {
  addNumber(writer, "count", std::uint64_t{looks_});
  for (std::size_t at = 0; at < std::size(kShares); ++at) {
    const std::string key = "shownBy" + std::to_string(kShares[at]);
    addObject(writer, key.c_str(), [&] {
      std::vector<Duration> times = reaches_[at].times;
      std::sort(times.begin(), times.end());
      const bool isAny = !times.empty();
      addMilliseconds(writer, "median",
                      isAny ? std::optional(times[times.size() / 2]) : std::nullopt);
      addMilliseconds(writer, "worst", isAny ? std::optional(times.back()) : std::nullopt);
      addNumber(writer, "never", reaches_[at].never);
    });
  }
}

// When the last lost phone was back; none where one still is not.
void CrowdSummary::writeRogues(PrettyWriter& writer, const CrowdEnd& end,
                               const Facts& facts) const {
  writer.Key("kinds");
  writer.StartArray();
  Duration from = facts.rogues.front().at;
  for (const Rogue& rogue : facts.rogues) {
    writer.String(kindOf(rogue).data(), static_cast<rapidjson::SizeType>(kindOf(rogue).size()));
    from = std::min(from, rogue.at);
  }
  writer.EndArray();
  const double frameSeconds =
      frames_ > 0 ? toSeconds(facts.simulated) / static_cast<double>(frames_) : 0;
  addMilliseconds(writer, "from", from);
  addNumber(writer, "phonesLost", end.phonesLost);
  addNumber(writer, "mostAtOnce", std::uint64_t{mostLost_});
  addNumber(
      writer, "meanSeconds",
      shareOf(static_cast<double>(lost_) * frameSeconds, static_cast<double>(phones_.size())));
  addMilliseconds(writer, "allBackAfter",
                  isLostNow_  ? std::nullopt
                  : lastLost_ ? std::optional(*lastLost_ - from)
                              : std::optional(Duration{}));
}

std::string CrowdSummary::json(const CrowdEnd& end, const Facts& facts) const {
  JsonBuffer buffer;
  PrettyWriter writer(buffer);
  writer.SetIndent(' ', 2);
  writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
  writer.StartObject();
  addNumber(writer, "phones", std::uint64_t{phones_.size()});
  addNumber(writer, "seats", std::uint64_t{facts.seats});
  addNumber(writer, "simulatedSeconds", toSeconds(facts.simulated));
  addNumber(writer, "frames", std::uint64_t{frames_});
  addNumber(writer, "framesWritten", std::uint64_t{facts.framesWritten});
  addObject(writer, "packets", [&] {
    addNumber(writer, "sent", facts.packetsSent);
    addNumber(writer, "offered", packets_.offered);
    addNumber(writer, "heard", packets_.heard);
    addNumber(writer, "lost", packets_.offered - std::min(packets_.heard, packets_.offered));
  });
  addObject(writer, "looks", [&] { writeLooks(writer); });
  addObject(writer, "dark", [&] {
    addNumber(writer, "share", shareOf(static_cast<double>(dark_), static_cast<double>(lit_)));
    addNumber(writer, "worst", darkest_);
    addMilliseconds(writer, "worstAt", darkest_ > 0 ? std::optional(darkestTime_) : std::nullopt);
  });
  addObject(writer, "pixelMap", [&] { writeMap(writer, map_, phones_); });
  addObject(writer, "flashes", [&] { writeFlashes(writer, end); });
  addNumber(writer, "mostTorches", std::uint64_t{mostTorches_});
  if (!facts.rogues.empty()) {
    addObject(writer, "rogues", [&] { writeRogues(writer, end, facts); });
  }
  if (end.proof) {
    addObject(writer, "proof", [&] { end.proof->write(writer, facts.framesPerSecond); });
  }
  if (!end.cues.empty()) {
    writer.Key("cues");
    writer.SetFormatOptions(rapidjson::kFormatDefault);
    writeCues(writer, end.cues);
  }
  if (facts.coverage != nullptr) {
    writer.Key("coverage");
    writeCoverage(writer, *facts.coverage);
  }
  const double spent = toSeconds(end.spent);
  addNumber(writer, "simulatedSecondsPerSecond",
            spent > 0 ? toSeconds(facts.simulated) / spent : 0);
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace halvora
