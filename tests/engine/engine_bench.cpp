// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/engine_bench.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

const ExactJsonReader& jsonReader() {
  static const ExactJsonReader kReader;
  return kReader;
}

VirtualPhoneSetup phoneSetup(const BenchSetup& setup) {
  VirtualPhoneSetup phone;
  phone.brightness = setup.brightness;
  phone.authorization = setup.authorization;
  phone.state = setup.state;
  phone.random = std::make_unique<ScriptedRandom>(setup.random, setup.draws);
  return phone;
}

std::string nameOf(ViewId view) { return rowOf(view).name; }

}  // namespace

const char* const kBenchPalettes = R"({"palettes": [
  {"id": 1, "colours": ["#0000FF", "#00FF00"]},
  {"id": 2, "colours": ["#FFFF00", "#FF00FF", "#00FFFF"]},
  {"id": 50, "colours": ["#FFFFFF"]},
  {"id": 0, "colours": ["#010101"]},
  {"id": 51, "colours": ["#020202"]}]})";

Broadcast look(int mode, Changes changes) {
  Broadcast broadcast;
  broadcast.applicationId = 258;
  broadcast.transmitter = 7;
  broadcast.master = 100;
  broadcast.red = 255;
  broadcast.mode = static_cast<std::uint8_t>(mode);
  return changed(broadcast, changes);
}

Broadcast changed(Broadcast broadcast, Changes changes) {
  for (const auto& [field, value] : changes) field.set(broadcast, value);
  return broadcast;
}

EngineBench::EngineBench(BenchSetup setup)
    : phone(jsonReader(), phoneSetup(setup)), recorders_(phone, log), parts_(log, seatColours) {
  if (setup.palettes) phone.mainBundle.resources["HVAssets/palettes.json"] = *setup.palettes;
  phone.mainBundle.strings = {{"outside_venue", "host: outside"},
                              {"bluetooth_off", "host: off"},
                              {"bluetooth_notAuthorised", "host: not authorised"}};
  phone.kitBundle.strings = {{"outside_venue", "kit: outside"},
                             {"bluetooth_off", "kit: off"},
                             {"bluetooth_notAuthorised", "kit: not authorised"}};
  auto engine = std::make_unique<ShowEngine>(
      recorders_.platform(), ShowEngineOptions{{setup.usageEndpoints}}, parts_.parts());
  engine_ = engine.get();
  controller_ = controllerOf(std::move(engine));
  engine_->views().setObserver(this);
  if (setup.hasCallbacks) {
    engine_->lightShowStartedCallback() = [this] { log.add("started"); };
    engine_->lightShowStoppedCallback() = [this] { log.add("stopped"); };
  }
  if (!setup.isViewLoaded) return;
  engine_->viewDidLoad();
  log.drain();
}

EngineBench::~EngineBench() = default;

void EngineBench::destroyEngine() {
  controller_.reset();
  engine_ = nullptr;
}

void EngineBench::seat(const char* section, const char* xPos, const char* yPos) {
  const auto set = [this](std::string_view key, const char* text) {
    phone.defaults.setFromOutside(
        key, text != nullptr ? std::optional<DefaultsValue>(std::string(text)) : std::nullopt);
  };
  set("selectedSection", section);
  set("xPos", xPos);
  set("yPos", yPos);
}

std::string EngineBench::defaultsText(std::string_view key) const {
  return textForKey(phone.defaults, key).value_or("(none)");
}

void EngineBench::listen() {
  engine_->start();
  runTo(1000);
  log.drain();
}

PacketFate EngineBench::hear(const Advertisement& advertisement) {
  const ScanDiagnostics before = engine_->diagnostics();
  EXPECT_TRUE(phone.bluetooth.advertise(advertisement)) << "nobody scans";
  const ScanDiagnostics& after = engine_->diagnostics();
  std::optional<PacketFate> met;
  std::uint64_t counted = 0;
  for (std::size_t at = 0; at < kPacketFateCount; ++at) {
    if (after.counts[at] == before.counts[at]) continue;
    counted += after.counts[at] - before.counts[at];
    met = static_cast<PacketFate>(at);
  }
  EXPECT_EQ(counted, 1U) << "every advertisement meets one fate";
  return met.value_or(PacketFate::noManufacturerData);
}

PacketFate EngineBench::hear(const std::vector<std::uint8_t>& data) {
  return hear(Advertisement{std::span<const std::uint8_t>(data)});
}

PacketFate EngineBench::hear(const Broadcast& broadcast) {
  const BroadcastBytes data = encodeBroadcast(broadcast);
  return hear(Advertisement{std::span<const std::uint8_t>(data)});
}

PacketFate EngineBench::hearNext(const Broadcast& broadcast) {
  return hear(changed(broadcast, {{&Broadcast::sequence, ++sequence_}}));
}

Acts EngineBench::take(std::initializer_list<std::string_view> words) {
  Acts acts = log.drain();
  std::erase_if(acts, [&](const std::string& act) {
    const std::string_view word = std::string_view(act).substr(0, act.find(' '));
    return std::find(words.begin(), words.end(), word) == words.end();
  });
  return acts;
}

void EngineBench::alphaChanged(ViewId view, double alpha, Duration duration) {
  const std::string span = duration > Duration::zero() ? " in " + actText(duration) : "";
  log.add("alpha " + nameOf(view) + " " + actText(alpha) + span);
}

void EngineBench::hiddenChanged(ViewId view, bool hidden) {
  log.add("hidden " + nameOf(view) + (hidden ? " true" : " false"));
}

void EngineBench::textChanged(ViewId view, const std::string& text) {
  log.add("text " + nameOf(view) + " " + text);
}

void EngineBench::lightChanged(const MaybeColour& colour) { log.add("light " + actText(colour)); }

void EngineBench::lightAnimationStarted(const MaybeColour& to, Duration duration) {
  log.add("fadeLight " + actText(to) + " in " + actText(duration));
}

void EngineBench::lightAnimationEnded(bool finished) {
  log.add(finished ? "lightEnded finished" : "lightEnded removed");
}

}  // namespace halvora
