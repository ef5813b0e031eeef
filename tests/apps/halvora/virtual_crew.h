// SPDX-License-Identifier: Apache-2.0
// A crew that plays a show in virtual time: what it says and when, and what its machine has. One
// thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapters/virtual/virtual_run_loop.h"
#include "venue/air/transmitter.h"
#include "venue/live/live_ground.h"

namespace halvora {

// What a crew does and when, and what its adapters are.
struct Crew {
  std::vector<std::pair<long long, std::string>> lines;
  /// Standard input ends.
  long long inputEnds = -1;
  /// What else happens around it.
  std::vector<std::pair<long long, std::function<void()>>> events;
  bool hasTerminal = false;
  bool hasBluetooth = true;
  bool hasOsc = true;
  bool hasOla = true;
  unsigned universe = 0;
  /// What the desk's faders say, and when.
  std::vector<std::pair<long long, std::vector<std::uint8_t>>> levels;
  /// Where it is listened for.
  std::string osc;
  /// Why the adapter of that name cannot be had.
  std::string lost;
  std::vector<std::string> shown;
};

class CrewAdvertiser final : public Advertiser {
 public:
  explicit CrewAdvertiser(Crew& crew) : crew_(crew) {}
  void open(const TransmitterSettings& settings) override {
    adapter_ = settings.adapter;
    if (adapter_ == crew_.lost) failure_ = "no such adapter";
  }
  void show(std::span<const std::uint8_t> data) override {
    crew_.shown.push_back(adapter_ + " " + std::to_string(data[24]) + "/" +
                          std::to_string(data[25]));
  }
  void end() override { crew_.shown.push_back(adapter_ + " off"); }
  bool isBusy() const override { return false; }
  const std::string& failure() const override { return failure_; }

 private:
  Crew& crew_;
  std::string adapter_;
  std::string failure_;
};

class OpenDesk final : public OlaInput {};

class VirtualGround final : public LiveGround {
 public:
  explicit VirtualGround(Crew& crew) : crew_(crew) {
    for (const auto& [time, event] : crew.events) {
      loop_.after(milliseconds(time), [&event = event] { event(); });
    }
  }
  RunLoop& loop() override { return loop_; }
  // The first minute ends after 150 ms.
  Date date() const override { return {59.85 + toSeconds(loop_.now())}; }
  void runUntil(const std::function<bool()>& isDone) override {
    while (!isDone() && loop_.now() < std::chrono::hours(1)) loop_.runFor(milliseconds(1));
  }
  void readLines(CommandSource source) override {
    source_ = std::move(source);
    for (const auto& [time, line] : crew_.lines) {
      loop_.after(milliseconds(time), [this, &line = line] { source_.line(line); });
    }
    if (crew_.inputEnds >= 0) {
      loop_.after(milliseconds(crew_.inputEnds), [this] { source_.ended(); });
    }
  }
  bool readKeys(CommandSource source) override {
    if (crew_.hasTerminal) readLines(std::move(source));
    return crew_.hasTerminal;
  }
  std::string readOsc(const std::string& address, std::uint16_t port,
                      CommandSource source) override {
    crew_.osc = address + " " + std::to_string(port);
    if (crew_.hasOsc) readLines(std::move(source));
    return crew_.hasOsc ? "" : "no OSC here";
  }
  std::unique_ptr<OlaInput> openOla(unsigned universe, OlaListener listener) override {
    if (!crew_.hasOla) return nullptr;
    crew_.universe = universe;
    ola_ = std::move(listener);
    ola_.changed(true);
    for (const auto& [time, levels] : crew_.levels) {
      loop_.after(milliseconds(time), [this, &levels = levels] { ola_.levels(levels); });
    }
    return std::make_unique<OpenDesk>();
  }
  std::unique_ptr<SerialQueue> makeQueue() override { return nullptr; }
  std::unique_ptr<Advertiser> makeAdvertiser() override {
    return crew_.hasBluetooth ? std::make_unique<CrewAdvertiser>(crew_) : nullptr;
  }

 private:
  Crew& crew_;
  VirtualRunLoop loop_;
  CommandSource source_;
  OlaListener ola_;
};

}  // namespace halvora
