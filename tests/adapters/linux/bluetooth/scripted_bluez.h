// SPDX-License-Identifier: Apache-2.0
// The daemon as a script in virtual time: the test says what there is, and answers each request
// itself or has them answered in the next turn. Owned by the test; one thread.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "adapters/linux/bluetooth/bluez_service.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

struct BluezScene {
  BluezReach reach = BluezReach::asking;
  std::vector<BluezAdapter> adapters;
};

class ScriptedBluez final : public BluezService {
 public:
  explicit ScriptedBluez(RunLoop& loop) : loop_(loop) {}

  void open(BluezListener& listener) override { listener_ = &listener; }
  void close() override { listener_ = nullptr; }
  void look() override {
    requests.emplace_back("look");
    if (answersItself) next_ = {loop_, loop_.soon([this] { become(lookFinds); })};
  }
  BluezReach reach() const override { return scene_.reach; }
  std::span<const BluezAdapter> adapters() const override { return scene_.adapters; }
  void start(const std::string& adapter, BluezMethod method) override {
    const bool isMonitor = method == BluezMethod::monitor;
    requests.push_back((isMonitor ? "monitor " : "discover ") + adapter);
    if (answersItself) {
      const auto own = startGivesOn.find(adapter);
      const BluezOutcome outcome = own != startGivesOn.end() ? own->second : startGives;
      next_ = {loop_, loop_.soon([this, isMonitor, outcome] {
                 answer(outcome);
                 if (isMonitor && outcome == BluezOutcome::done) activate();
               })};
    }
  }
  void stop() override {
    requests.emplace_back("stop");
    if (answersItself) next_ = {loop_, loop_.soon([this] { answer(); })};
  }
  void abandon() override { requests.emplace_back("abandon"); }
  const BluezSignalCounts& signalCounts() const override { return counts_; }
  const BluezErrors& errors() const override { return errors_; }

  /// Tells the central what there is now; nothing that was asked before is answered any more if the
  /// daemon is not there.
  void become(BluezScene scene) {
    scene_ = std::move(scene);
    if (scene_.reach != BluezReach::there) next_.invalidate();
    listener_->systemChanged();
  }
  void answer(BluezOutcome outcome = BluezOutcome::done) { listener_->answered(outcome); }
  void activate() { listener_->monitorActivated(); }
  void release() { listener_->monitorReleased(); }
  void wakeUp() { listener_->wokeUp(); }
  void advertise() {
    constexpr std::uint8_t kPacket[] = {0x09, 0xC9, 0x01};
    listener_->heard(kPacket);
  }
  void advertise(std::span<const std::uint8_t> packet) { listener_->heard(packet); }
  bool isOpen() const { return listener_ != nullptr; }

  std::vector<std::string> drain() { return std::exchange(requests, {}); }

  std::vector<std::string> requests;
  bool answersItself = true;
  BluezOutcome startGives = BluezOutcome::done;
  /// The same for single adapters.
  std::map<std::string, BluezOutcome> startGivesOn;
  BluezScene lookFinds;

 private:
  RunLoop& loop_;
  Timer next_;
  BluezListener* listener_ = nullptr;
  BluezScene scene_;
  BluezSignalCounts counts_;
  BluezErrors errors_;
};

}  // namespace halvora
