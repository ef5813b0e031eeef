// SPDX-License-Identifier: Apache-2.0
// How long the trace of a show takes, as the command does it but for files and output: parse the
// scenario, run the phone, format every line. Needs the demo's assets below the working folder.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/standard_files.h"
#include "bench/require.h"
#include "engine/broadcast.h"
#include "halvora/platform/absent.h"
#include "text/asset_paths.h"
#include "venue/show/trace.h"

namespace halvora {

namespace {

constexpr const char* kAssets = "assets/demo";
constexpr int kPacketsASecond = 10;
constexpr int kBusySeconds = 60;
/// The first scan begins a second after the start.
constexpr int kFirstPacketTenths = 11;

// Ten packets a second, none like the one before: the strobe at full speed over ever new palettes
// and colours for seven seconds of ten, the other fast effects in the rest.
Broadcast busyLook(int number) {
  constexpr std::uint8_t kStrobe = 5;
  constexpr std::uint8_t kOtherModes[] = {6, 3, 17};
  const int second = number / kPacketsASecond % 10;
  Broadcast look;
  look.applicationId = 4242;
  look.venueId = 7;
  look.master = static_cast<std::uint8_t>(155 + number % 100);
  look.red = static_cast<std::uint8_t>(number * 37 % 256);
  look.green = static_cast<std::uint8_t>(number * 91 % 256);
  look.blue = static_cast<std::uint8_t>(255 - number * 53 % 256);
  look.mode = second < 7 ? kStrobe : kOtherModes[second - 7];
  look.speed = 255;
  look.ledMode = static_cast<std::uint8_t>(number / 5 % 2);
  look.vibrate = static_cast<std::uint8_t>(number / 20 % 3);
  look.paletteId = static_cast<std::uint8_t>(number % 3 == 2 ? 0 : number % 50 + 1);
  look.sequence = static_cast<std::uint16_t>(number + 1);
  look.transmitter = 3;
  return look;
}

std::string busyShow() {
  std::string text = "{\"at\": 0, \"start\": true}\n";
  for (int number = 0; number < kPacketsASecond * kBusySeconds; ++number) {
    const int tenths = kFirstPacketTenths + number;
    text += "{\"at\": " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) +
            R"(, "packet": ")" + NSDataToHex(encodeBroadcast(busyLook(number))) + "\"}\n";
  }
  return text;
}

struct TraceSize {
  std::uint64_t lines = 0;
  std::uint64_t lightLines = 0;
  std::uint64_t bytes = 0;
};

Scenario parsed(const std::string& text, const JsonReader& json) {
  auto result = parseScenario(text, json);
  require(std::holds_alternative<Scenario>(result), "the scenario is not one");
  return std::get<Scenario>(std::move(result));
}

TraceSize trace(const std::string& text, std::optional<Duration> until) {
  const ExactJsonReader json;
  TraceOptions options;
  options.assets = kAssets;
  options.until = until;
  TraceSize size;
  const TraceEnd end = runTrace(parsed(text, json), options, std::make_unique<SeededRandom>(1),
                                {json, absent::images()}, [&](std::string_view lines) {
                                  ++size.lines;
                                  size.bytes += lines.size();
                                  if (lines.find("\"light\":") != lines.npos) ++size.lightLines;
                                });
  require(end == TraceEnd::whole, "the trace never ends");
  return size;
}

void traceShow(benchmark::State& state, const std::string& text, std::optional<Duration> until,
               Duration length, std::uint64_t fewestLightLines) {
  TraceSize size;
  for (auto _ : state) {
    size = trace(text, until);
    benchmark::DoNotOptimize(size);
  }
  require(size.lightLines >= fewestLightLines, "the show is not as busy as it should be");
  state.counters["lines"] = static_cast<double>(size.lines);
  state.counters["bytes"] = static_cast<double>(size.bytes);
  state.counters["showSeconds"] = toSeconds(length);
}

bool hasAssets(benchmark::State& state) {
  if (readFile(std::string(kAssets) + "/" + kPaletteFile, kLargestPaletteFile)) return true;
  state.SkipWithError("no assets/demo below the working folder");
  return false;
}

void busyMinute(benchmark::State& state) {
  if (!hasAssets(state)) return;
  const Duration end = milliseconds(kFirstPacketTenths * 100 + kBusySeconds * 1000);
  traceShow(state, busyShow(), end, end, std::uint64_t{kBusySeconds} * 60);
}
BENCHMARK(busyMinute)->Name("TraceBusyMinute")->Unit(benchmark::kMillisecond);

void exampleShow(benchmark::State& state) {
  if (!hasAssets(state)) return;
  const auto text = readFile(std::string(kAssets) + "/example-show.jsonl", kLargestScenario);
  require(text.has_value(), "the example show cannot be read");
  const Duration end = parsed(*text, ExactJsonReader()).lastAction() + milliseconds(10'000);
  traceShow(state, *text, end, end, 1);
}
BENCHMARK(exampleShow)->Name("TraceExampleShow")->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace halvora
