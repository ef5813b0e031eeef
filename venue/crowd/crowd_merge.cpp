// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_merge.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "venue/base/progress_bar.h"
#include "venue/crowd/crowd_part.h"
#include "venue/crowd/crowd_record.h"

namespace halvora {

namespace {

using Failure = std::optional<CommandResult>;
using Part = CrowdPartReader;

std::optional<Duration> pauseOf(const CrowdPartHead& head) {
  return head.coverage ? std::optional(head.coverage->pause) : std::nullopt;
}

class CrowdMerge {
 public:
  CrowdMerge(const CrowdMergeRequest& request, const Outside& outside)
      : request_(request), outside_(outside) {}

  CommandResult run(const Output& output) {
    for (const auto step : {&CrowdMerge::openParts, &CrowdMerge::checkParts,
                            &CrowdMerge::openOutput, &CrowdMerge::show}) {
      if (const Failure failure = (this->*step)()) return *failure;
    }
    return writeAll(report_, output);
  }

 private:
  Failure openParts();
  Failure checkParts();
  Failure openOutput();
  Failure show();
  Failure readSlices(CrowdRecord& record, ProgressBar& bar);
  bool addUp(CrowdSlice& sum);
  bool addFrame(CrowdFrame& sum, std::size_t at);
  bool addLook(ClosedLook& sum, std::size_t at);
  bool addField(CrowdSlice& sum);
  bool addEnds();
  Failure doNotFit(const Part& part) const {
    return unusable(part.path() + ": does not fit to " + parts_.front()->path() +
                    "; run the shards again");
  }
  const CrowdPartHead& head() const { return parts_.front()->head(); }

  const CrowdMergeRequest& request_;
  const Outside& outside_;
  std::vector<std::unique_ptr<Part>> parts_;
  std::vector<CrowdSeat> phones_;
  std::optional<FieldSections> sections_;
  /// The numbers that each part's sections have in all.
  std::vector<std::vector<std::size_t>> sectionsOf_;
  std::unique_ptr<CrowdOutput> output_;
  /// Of the slice's frames.
  std::vector<std::vector<CrowdLight>> lights_;
  std::optional<Coverage> coverage_;
  CrowdEnd end_;
  std::string report_;
};

Failure CrowdMerge::openParts() {
  for (const std::string& path : request_.parts) {
    auto part = Part::open(path);
    if (const auto* why = std::get_if<std::string>(&part)) return unusable(*why);
    parts_.push_back(std::get<std::unique_ptr<Part>>(std::move(part)));
  }
  std::ranges::sort(parts_, {}, [](const auto& part) { return part->head().shard.number; });
  return std::nullopt;
}

Failure CrowdMerge::checkParts() {
  const CrowdPartHead& first = head();
  for (const auto& part : parts_) {
    const CrowdPartHead& head = part->head();
    const auto [ours, others] = std::ranges::mismatch(head.facts, first.facts);
    if (ours != head.facts.end() && others != first.facts.end()) {
      return unusable(part->path() + ": was run with " + *ours + ", but " + parts_.front()->path() +
                      " with " + *others);
    }
    const bool isSame =
        head.facts.size() == first.facts.size() && head.shard.of == first.shard.of &&
        head.phones == first.phones && head.seats == first.seats &&
        head.isForSheet == first.isForSheet && head.width == first.width &&
        head.height == first.height && head.end == first.end && head.from == first.from &&
        head.packetsSent == first.packetsSent && head.framesPerSecond == first.framesPerSecond &&
        pauseOf(head) == pauseOf(first);
    if (!isSame) return doNotFit(*part);
  }
  for (std::uint64_t number = 1; number <= first.shard.of; ++number) {
    const auto count = std::ranges::count_if(
        parts_, [number](const auto& part) { return part->head().shard.number == number; });
    if (count == 1) continue;
    return unusable("shard " + std::to_string(number) + " of " + std::to_string(first.shard.of) +
                    (count == 0 ? " is missing" : " is there twice"));
  }
  for (const auto& part : parts_) {
    phones_.insert(phones_.end(), part->head().places.begin(), part->head().places.end());
    if (!part->head().coverage) continue;
    const Coverage& coverage = *part->head().coverage;
    if (!coverage_) coverage_.emplace().pause = coverage.pause;
    coverage_->silences.insert(coverage_->silences.end(), coverage.silences.begin(),
                               coverage.silences.end());
  }
  if (phones_.empty()) return unusable(parts_.front()->path() + ": has no phones");
  sections_.emplace(phones_);
  std::map<std::string_view, std::size_t> numbers;
  for (std::size_t at = 0; at < sections_->count(); ++at) numbers[sections_->name(at)] = at;
  for (const auto& part : parts_) {
    auto& sections = sectionsOf_.emplace_back();
    for (const std::string& name : part->head().sections) {
      const auto found = numbers.find(name);
      if (found == numbers.end()) return doNotFit(*part);
      sections.push_back(found->second);
    }
  }
  return std::nullopt;
}

Failure CrowdMerge::openOutput() {
  if (!request_.coverage.empty() && !coverage_) {
    return unusable(request_.coverage + ": the shards were run without --coverage");
  }
  if (request_.out.empty()) return std::nullopt;
  const CrowdOutputKind kind = crowdOutputKindOf(request_.out);
  if (kind == CrowdOutputKind::other) {
    return unusable(request_.out +
                    ": only a movie NAME.mp4, a sheet NAME.png or a folder can be written");
  }
  if (head().isForSheet && kind != CrowdOutputKind::sheet) {
    return unusable(request_.out +
                    ": the shards have the pictures of a sheet only; run them with an --out of "
                    "this kind");
  }
  const CrowdPartHead& first = head();
  output_ = makeCrowdOutput(request_.out,
                            {first.width, first.height, first.framesPerSecond,
                             frameCountOf(first.from, first.end, first.framesPerSecond)},
                            {outside_.movies, outside_.encodePicture});
  if (output_) return std::nullopt;
  return unusable(request_.out + ": cannot be written");
}

Failure CrowdMerge::show() {
  CrowdRecord record(phones_, output_.get(), head().width, head().height);
  {
    ProgressBar bar(
        outside_.terminal, "merging", "seconds",
        static_cast<std::uint64_t>(std::max<std::int64_t>(head().end / milliseconds(1000), 1)));
    if (Failure failure = readSlices(record, bar)) return failure;
  }
  if (!addEnds())
    return unusable(parts_.front()->path() + ": its cues are not those of the others");
  if (output_ && !output_->finish()) return failed(request_.out + ": cannot be written");
  report_ = record.summary().json(
      end_, {head().seats, head().packetsSent, record.framesWritten(), head().end - head().from,
             head().rogues, coverage_ ? &*coverage_ : nullptr});
  if (request_.coverage.empty()) return std::nullopt;
  return writeCoverageTo(request_.coverage, *coverage_, phones_, head().width, head().height,
                         outside_);
}

// All parts have the same slices, of other phones.
Failure CrowdMerge::readSlices(CrowdRecord& record, ProgressBar& bar) {
  Duration before{};
  for (;;) {
    if (outside_.isInterrupted) return interrupted();
    std::optional<Part::Next> all;
    for (const auto& part : parts_) {
      const Part::Next next = part->next();
      if (next == Part::Next::bad) {
        return unusable(part->path() + ": is damaged or was cut short; run its shard again");
      }
      if (all && *all != next) return doNotFit(*part);
      all = next;
    }
    if (all == Part::Next::end) return std::nullopt;
    CrowdSlice sum;
    if (!addUp(sum) || sum.end <= before) return doNotFit(*parts_.back());
    before = sum.end;
    if (!record.add(sum)) return failed(request_.out + ": cannot be written");
    bar.show(static_cast<std::uint64_t>(sum.end / milliseconds(1000)));
  }
}

bool CrowdMerge::addUp(CrowdSlice& sum) {
  const CrowdSlice& first = parts_.front()->slice();
  sum.end = first.end;
  sum.frames.resize(first.frames.size());
  sum.closedLooks.resize(first.closedLooks.size());
  sum.watches = first.watches;
  for (const auto& part : parts_) {
    const CrowdSlice& slice = part->slice();
    const bool isSame = slice.end == sum.end && slice.frames.size() == sum.frames.size() &&
                        slice.closedLooks.size() == sum.closedLooks.size() &&
                        slice.watches == sum.watches;
    if (!isSame) return false;
    sum.packets.add(slice.packets);
    sum.phoneCurve.take(slice.phoneCurve);
  }
  lights_.resize(sum.frames.size());
  for (std::size_t at = 0; at < sum.frames.size(); ++at) {
    if (!addFrame(sum.frames[at], at)) return false;
  }
  for (std::size_t at = 0; at < sum.closedLooks.size(); ++at) {
    if (!addLook(sum.closedLooks[at], at)) return false;
  }
  return addField(sum);
}

bool CrowdMerge::addFrame(CrowdFrame& sum, std::size_t at) {
  const CrowdFrame& first = parts_.front()->slice().frames[at];
  sum = first;
  sum.counts = {};
  std::vector<CrowdLight>& lights = lights_[at];
  lights.clear();
  for (const auto& part : parts_) {
    const CrowdFrame& frame = part->slice().frames[at];
    if (frame.time != first.time || frame.isShowOnAir != first.isShowOnAir ||
        frame.mapFrame != first.mapFrame) {
      return false;
    }
    sum.counts.add(frame.counts);
    lights.insert(lights.end(), frame.lights.begin(), frame.lights.end());
  }
  sum.lights = lights;
  // Whether a frame has lights follows from the show alone.
  return lights.size() == phones_.size() || (lights.empty() && head().isForSheet);
}

bool CrowdMerge::addLook(ClosedLook& sum, std::size_t at) {
  sum.time = parts_.front()->slice().closedLooks[at].time;
  for (const auto& part : parts_) {
    const ClosedLook& look = part->slice().closedLooks[at];
    if (look.time != sum.time) return false;
    sum.phones += look.phones;
    sum.delays.add(look.delays);
  }
  return true;
}

bool CrowdMerge::addField(CrowdSlice& sum) {
  sum.field.resize(sum.watches.size() * sections_->count());
  for (std::size_t part = 0; part < parts_.size(); ++part) {
    const auto& sections = sectionsOf_[part];
    const auto& field = parts_[part]->slice().field;
    for (std::size_t at = 0; at < field.size(); ++at) {
      sum.field[at / sections.size() * sections_->count() + sections[at % sections.size()]] +=
          field[at];
    }
  }
  return std::ranges::is_sorted(sum.watches);
}

bool CrowdMerge::addEnds() {
  for (const auto& part : parts_) {
    const CrowdEnd& end = part->end();
    end_.phoneFlashes.take(end.phoneFlashes);
    end_.phonesLost += end.phonesLost;
    end_.spent += end.spent;
    if (part == parts_.front()) {
      end_.cues = end.cues;
      continue;
    }
    const bool isSame =
        std::ranges::equal(end.cues, end_.cues, [](const CueTally& one, const CueTally& other) {
          return one.name == other.name && one.begin == other.begin;
        });
    if (!isSame) return false;
    for (std::size_t at = 0; at < end.cues.size(); ++at) end_.cues[at].add(end.cues[at]);
  }
  return true;
}

}  // namespace

CommandResult mergeCrowd(const CrowdMergeRequest& request, const Call& call) {
  return CrowdMerge(request, call.outside).run(call.output);
}

}  // namespace halvora
