// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/coverage.h"

#include <algorithm>
#include <array>
#include <new>

#include "venue/base/json_line.h"
#include "venue/crowd/crowd_picture.h"
#include "venue/plan/placed_seats.h"
#include "venue/plan/plan_canvas.h"

namespace halvora {

namespace {

constexpr Colour kBackground = colourOfBytes(16, 18, 24);
constexpr Colour kText = colourOfBytes(236, 239, 244);

// Told apart by eyes that see no red or no green too: from cold over bright to hot.
struct Step {
  /// Milliseconds; a silence up to that, and longer than the step before.
  std::uint32_t most;
  const char* text;
  Colour colour;
};
constexpr std::array kSteps = {
    Step{250, "up to 0.25 s", colourOfBytes(49, 104, 189)},
    Step{500, "up to 0.5 s", colourOfBytes(102, 178, 214)},
    Step{1000, "up to 1 s", colourOfBytes(224, 243, 248)},
    Step{2000, "up to 2 s", colourOfBytes(253, 190, 99)},
    Step{Coverage::kNothing - 1, "longer", colourOfBytes(226, 74, 51)},
    Step{Coverage::kNothing, "hears nothing", colourOfBytes(122, 1, 119)},
};

std::size_t stepOf(std::uint32_t silence) {
  std::size_t step = 0;
  while (silence > kSteps[step].most) ++step;
  return step;
}

std::array<std::uint64_t, kSteps.size()> countsOf(const Coverage& coverage) {
  std::array<std::uint64_t, kSteps.size()> counts{};
  for (const std::uint32_t silence : coverage.silences) ++counts[stepOf(silence)];
  return counts;
}

struct Listened {
  std::size_t first = 0;
  Duration begin{};
  Duration end{};
};

std::uint32_t silenceAt(const Air& air, const Listened& listened, std::uint32_t phone,
                        const CrowdSeat& seat) {
  Duration last = listened.begin;
  Duration longest{};
  bool hasHeard = false;
  for (std::size_t at = listened.first; at < air.sent().size(); ++at) {
    if (!air.packet(air.sent()[at]).broadcast) continue;
    const auto arrival = air.arrival(at, phone, seat.at, seat.section);
    if (!arrival) continue;
    hasHeard = true;
    longest = std::max(longest, *arrival - last);
    last = std::max(last, *arrival);
  }
  if (!hasHeard) return Coverage::kNothing;
  longest = std::max(longest, listened.end - last);
  return static_cast<std::uint32_t>(
      std::min<std::int64_t>(longest / milliseconds(1), Coverage::kNothing - 1));
}

}  // namespace

Coverage coverageOf(const Air& air, std::span<const CrowdSeat> seats, std::size_t firstPhone,
                    Duration from, Workers& workers, const std::function<bool()>& goesOn) {
  Coverage coverage;
  coverage.silences.assign(seats.size(), Coverage::kNothing);
  const std::span<const Duration> show = air.showTimes();
  const auto begin = std::ranges::lower_bound(show, from);
  if (begin == show.end()) return coverage;
  for (auto at = begin; at + 1 != show.end(); ++at) {
    coverage.pause = std::max(coverage.pause, *(at + 1) - *at);
  }
  const auto first = std::ranges::lower_bound(air.sent(), *begin, {}, &Sent::time);
  const Listened listened{static_cast<std::size_t>(first - air.sent().begin()), *begin,
                          show.back()};
  const auto threads = static_cast<std::size_t>(std::max(workers.count(), 1));
  const auto listenAll = [&](std::size_t thread) {
    const std::size_t end = seats.size() * (thread + 1) / threads;
    for (std::size_t at = seats.size() * thread / threads; at < end && goesOn(); ++at) {
      coverage.silences[at] =
          silenceAt(air, listened, static_cast<std::uint32_t>(firstPhone + at), seats[at]);
    }
  };
  std::vector<Task> tasks;
  for (std::size_t thread = 0; thread < threads; ++thread) {
    tasks.emplace_back([&listenAll, thread] { listenAll(thread); });
  }
  if (runAnyway(workers, tasks) == WorkEnd::failed) throw std::bad_alloc();
  return coverage;
}

Image drawCoverage(const Coverage& coverage, std::span<const CrowdSeat> seats, int width,
                   int height) {
  const double letter = std::clamp(width / 64.0, 7.0, 18.0);
  const double line = letter * 1.9;
  const double legend = line * (kSteps.size() + 2.5);
  PlanCanvas canvas(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height + legend),
                    kBackground);
  const std::vector<CrowdDisc> discs = discsOf(seats, width, height);
  for (std::size_t at = 0; at < discs.size(); ++at) {
    canvas.disc({discs[at].x, discs[at].y}, discs[at].radius,
                kSteps[stepOf(coverage.silences[at])].colour);
  }
  CanvasPoint place{letter, static_cast<double>(height) + letter / 2};
  canvas.text(place, letter, "longest time without a packet", kText, kBackground);
  const auto counts = countsOf(coverage);
  for (std::size_t step = 0; step < kSteps.size(); ++step) {
    place.y += line;
    canvas.disc({place.x + letter / 2, place.y + letter / 2}, letter / 2, kSteps[step].colour);
    canvas.text({place.x + letter * 2, place.y}, letter, kSteps[step].text, kText, kBackground);
    canvas.text({place.x + letter * 18, place.y}, letter, counted(counts[step], "seat", "seats"),
                kText, kBackground);
  }
  place.y += line;
  canvas.text(place, letter,
              "the show's own longest pause: " + levelText(toSeconds(coverage.pause)) + " s", kText,
              kBackground);
  return canvas.finish();
}

void writeCoverage(PrettyJsonWriter& writer, const Coverage& coverage) {
  const auto counts = countsOf(coverage);
  writer.StartObject();
  writer.Key("pause");
  writer.Int64(coverage.pause / milliseconds(1));
  writer.Key("seats");
  writer.StartArray();
  for (std::size_t step = 0; step + 1 < kSteps.size(); ++step) {
    writer.StartObject();
    writer.Key("silence");
    if (step + 2 < kSteps.size()) {
      writer.Uint(kSteps[step].most);
    } else {
      writer.Null();
    }
    writer.Key("seats");
    writer.Uint64(counts[step]);
    writer.EndObject();
  }
  writer.EndArray();
  writer.Key("nothing");
  writer.Uint64(counts.back());
  writer.EndObject();
}

}  // namespace halvora
